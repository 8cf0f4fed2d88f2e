#pragma once

#include <cstddef>
#include <iterator>
#include <string>
#include <string_view>

namespace vistrane {

/// The names of a folder's entries, in the order of the listing.
///
/// The names are stored contiguously: a listing needs no allocation for each name, and comparing
/// two listings is one comparison of memory. A view of a name is valid until the object is changed,
/// moved or destroyed. One thread at a time.
class FileNames {
public:
    class Iterator {
    public:
        using iterator_concept = std::forward_iterator_tag;
        using iterator_category = std::input_iterator_tag;
        using value_type = std::string_view;
        using difference_type = std::ptrdiff_t;
        using pointer = void;
        using reference = std::string_view;

        Iterator() = default;
        /// `at`: the first byte of a zero-terminated name.
        explicit Iterator(const char* at) : name_(at) {}

        reference operator*() const { return name_; }
        Iterator& operator++() {
            name_ = std::string_view(name_.data() + name_.size() + 1);
            return *this;
        }
        // NOLINTNEXTLINE(cert-dcl21-cpp): iterators can be assigned to
        Iterator operator++(int) {
            const Iterator before = *this;
            ++*this;
            return before;
        }
        bool operator==(const Iterator& other) const { return name_.data() == other.name_.data(); }

    private:
        std::string_view name_;
    };

    using value_type = std::string_view;
    using const_iterator = Iterator;
    using iterator = Iterator;

    /// `name` may hold any bytes except zero.
    void append(std::string_view name) {
        bytes_.append(name);
        bytes_.push_back('\0');
        ++count_;
    }

    // `end` points at the terminating zero of the string, so reading there is valid.
    Iterator begin() const { return Iterator(bytes_.c_str()); }
    Iterator end() const { return Iterator(bytes_.c_str() + bytes_.size()); }
    std::size_t size() const { return count_; }
    bool empty() const { return count_ == 0; }

    /// The zero-terminated names, one after the other.
    std::string_view bytes() const { return bytes_; }

    /// Whether the names and their order are the same.
    bool operator==(const FileNames& other) const { return bytes_ == other.bytes_; }

private:
    std::string bytes_;
    std::size_t count_ = 0;
};

} // namespace vistrane
