#pragma once

#include <string>

namespace vistrane {

/// An address. A file address holds the path in the bytes of the file system.
class NSURL {
public:
    /// `path` is absolute.
    static NSURL fileURLWithPath(std::string path) { return NSURL(std::move(path), true); }

    /// Any other address, already percent-encoded.
    static NSURL URLWithString(std::string address) { return NSURL(std::move(address), false); }

    bool isFileURL() const { return isFile_; }

    /// The path of a file address, without a trailing slash; empty for other addresses.
    std::string path() const { return isFile_ ? text_ : std::string(); }

    /// The address as given; a file address gives "file://" and its path.
    std::string absoluteString() const { return isFile_ ? "file://" + text_ : text_; }

    bool operator==(const NSURL&) const = default;

private:
    NSURL(std::string text, bool isFile) : text_(std::move(text)), isFile_(isFile) {
        while (isFile_ && text_.size() > 1 && text_.back() == '/') {
            text_.pop_back();
        }
    }

    std::string text_;
    bool isFile_;
};

} // namespace vistrane
