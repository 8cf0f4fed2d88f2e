#include "tests/faults/FaultCells.h"

#include <array>
#include <cctype>
#include <ostream>
#include <utility>

namespace vistrane {

namespace {

using Names = std::vector<std::string>;

/// A new frame's path, but not that of the frame that is there before.
constexpr char newFrame[] = "a folder/2";
constexpr char hiddenMovie[] = ".vistrane-part";
constexpr char settingsFile[] = "/.config/vistrane/settings"; // and those beside it

std::string ordinal(int number) {
    constexpr std::array<const char*, 4> endings{"th", "st", "nd", "rd"};
    return std::to_string(number) +
           (number < 4 ? endings.at(static_cast<std::size_t>(number)) : endings[0]);
}

class CellList {
public:
    explicit CellList(std::vector<FaultCell>& cells, FaultScene scene)
        : cells_(cells), scene_(scene) {}

    /// The first of the errors is common.
    void addAll(const std::string& call, const Names& errors, const std::string& where) {
        for (const std::string& error : errors) {
            addFrom(1, call, error, where);
            cells_.back().fault = error;
            cells_.back().isCommon = error == errors.front();
        }
    }

    /// From one call on, every call fails.
    void addFrom(int first, const std::string& call, const std::string& error,
                 const std::string& where) {
        add(call, error + " from the " + ordinal(first) + " call on",
            lineOf(call, error, first, 0, where));
    }

    void addOnce(int number, const std::string& call, const std::string& error,
                 const std::string& where) {
        add(call, error + " in the " + ordinal(number) + " call",
            lineOf(call, error, number, number, where));
    }

    /// A signal interrupts a call now and then, not forever.
    void addInterrupted(const std::string& call, const std::string& where) {
        add(call, "EINTR three times", lineOf(call, "EINTR", 1, 3, where));
    }

    void addShortWrites(const std::string& where) {
        add("write", "short writes", lineOf("write", "short", 1, 0, where));
        cells_.back().isCommon = true;
    }

    void addThreads() {
        add("pthread_create", "EAGAIN for the program's own threads",
            lineOf("pthread_create", "EAGAIN", 1, 0, "libstdc++"));
        add("pthread_create", "EAGAIN for all threads",
            lineOf("pthread_create", "EAGAIN", 1, 0, ""));
        cells_.back().isCommon = true;
    }

    /// Large blocks of the program's own code; `new` is a function of libstdc++. The first of them,
    /// one at a time, and all of them.
    void addMemory(int blocks) {
        const auto lines = [](int first, int last) {
            return lineOf("malloc", "ENOMEM", first, last, "500000 /vistrane") + "\n" +
                   lineOf("malloc", "ENOMEM", first, last, "500000 libstdc++");
        };
        add("malloc", "ENOMEM for all large blocks", lines(1, 0));
        for (int number = 1; number <= blocks; ++number) {
            add("malloc", "ENOMEM for the " + ordinal(number) + " large block",
                lines(number, number));
        }
    }

    void add(const std::string& call, const std::string& fault, const std::string& setting) {
        cells_.push_back({scene_, call, fault, setting});
    }

    static std::string lineOf(const std::string& call, const std::string& error, int first,
                              int last, const std::string& where) {
        return call + " " + error + " " + std::to_string(first) + " " + std::to_string(last) + " " +
               where;
    }

private:
    std::vector<FaultCell>& cells_;
    FaultScene scene_;
};

void addSavingFrames(std::vector<FaultCell>& cells) {
    CellList list(cells, FaultScene::savingFrames);
    list.addAll("open", {"ENOSPC", "EDQUOT", "EROFS", "EIO", "EACCES", "ENOENT", "EMFILE"},
                newFrame);
    list.addInterrupted("open", newFrame);
    list.addAll("write", {"ENOSPC", "EDQUOT", "EROFS", "EIO", "EACCES"}, newFrame);
    list.addFrom(2, "write", "ENOSPC", newFrame);
    list.addInterrupted("write", newFrame);
    list.addShortWrites(newFrame);
    list.addAll("readdir", {"EIO", "EACCES"}, "a folder");
    list.addInterrupted("readdir", "a folder");
    list.addThreads();
    list.addMemory(4);
}

void addReadingFrames(std::vector<FaultCell>& cells) {
    CellList list(cells, FaultScene::readingFrames);
    list.addAll("open", {"EIO", "EACCES", "ENOENT", "EMFILE"}, "b.png");
    list.addInterrupted("open", "b.png");
    list.add("open", "EIO for every frame", CellList::lineOf("open", "EIO", 1, 0, ".png"));
    list.addAll("read", {"EIO", "EACCES"}, "b.png");
    list.addInterrupted("read", "b.png");
}

void addWritingMovie(std::vector<FaultCell>& cells) {
    CellList list(cells, FaultScene::writingMovie);
    list.addAll("open", {"ENOSPC", "EDQUOT", "EROFS", "EIO", "EACCES", "ENOENT", "EMFILE"},
                hiddenMovie);
    list.addInterrupted("open", hiddenMovie);
    list.addAll("write", {"ENOSPC", "EDQUOT", "EROFS", "EIO", "EACCES"}, hiddenMovie);
    for (int number = 2; number <= 6; ++number) {
        list.addFrom(number, "write", "ENOSPC", hiddenMovie);
    }
    list.addInterrupted("write", hiddenMovie);
    list.addShortWrites(hiddenMovie);
    list.addAll("fsync", {"EIO", "ENOSPC", "EDQUOT", "EROFS", "EACCES"}, hiddenMovie);
    list.addOnce(2, "fsync", "EIO", hiddenMovie);
    list.addInterrupted("fsync", hiddenMovie);
    list.addAll("rename", {"EIO", "ENOSPC", "EDQUOT", "EROFS", "EACCES", "ENOENT"}, hiddenMovie);
    list.addInterrupted("rename", hiddenMovie);
    list.add("rename", "no exclusive rename (EINVAL)",
             CellList::lineOf("renameat2", "EINVAL", 1, 0, hiddenMovie));
    list.add("rename", "no exclusive rename (EINVAL) and no links (EPERM)",
             CellList::lineOf("renameat2", "EINVAL", 1, 0, hiddenMovie) + "\n" +
                 CellList::lineOf("linkat", "EPERM", 1, 0, hiddenMovie));
    list.addThreads();
    list.add("pthread_create", "EAGAIN for the encoder's threads",
             CellList::lineOf("pthread_create", "EAGAIN", 1, 0, "libx264"));
    list.addMemory(3);
}

void addListing(std::vector<FaultCell>& cells) {
    CellList list(cells, FaultScene::listing);
    list.addAll("opendir", {"EIO", "EACCES", "ENOENT", "EMFILE", "EINTR"}, "a folder");
    list.addAll("open", {"EIO", "EACCES", "ENOENT", "EMFILE"}, "a folder");
    list.addInterrupted("open", "a folder");
    list.addAll("readdir", {"EIO", "EACCES", "ENOENT"}, "a folder");
    list.addInterrupted("readdir", "a folder");
    list.addThreads();
}

void addReadingSettings(std::vector<FaultCell>& cells) {
    CellList list(cells, FaultScene::readingSettings);
    list.addAll("open", {"EIO", "EACCES", "EMFILE"}, settingsFile);
    list.addInterrupted("open", settingsFile);
    list.addAll("read", {"EIO", "EACCES"}, settingsFile);
    list.addInterrupted("read", settingsFile);
    list.addThreads();
}

void addSavingSettings(std::vector<FaultCell>& cells) {
    CellList list(cells, FaultScene::savingSettings);
    list.addAll("open", {"ENOSPC", "EDQUOT", "EROFS", "EIO", "EACCES", "ENOENT", "EMFILE"},
                settingsFile);
    for (int number = 2; number <= 6; ++number) {
        list.addFrom(number, "open", "EIO", settingsFile);
    }
    list.addInterrupted("open", settingsFile);
    list.addAll("write", {"ENOSPC", "EDQUOT", "EROFS", "EIO", "EACCES"}, settingsFile);
    list.addFrom(2, "write", "ENOSPC", settingsFile);
    list.addInterrupted("write", settingsFile);
    list.addShortWrites(settingsFile);
    list.addAll("fsync", {"EIO", "ENOSPC", "EDQUOT", "EROFS", "EACCES"}, settingsFile);
    list.addInterrupted("fsync", settingsFile);
    list.addAll("rename", {"EIO", "ENOSPC", "EDQUOT", "EROFS", "EACCES", "ENOENT"}, settingsFile);
    // The first call is Qt's.
    list.addOnce(1, "rename", "EINTR", settingsFile);
    list.add("rename", "EINTR three times for the finished file",
             CellList::lineOf("rename", "EINTR", 1, 3, "/settings /"));
}

} // namespace

std::vector<FaultScene> faultScenes() {
    return {FaultScene::savingFrames, FaultScene::readingFrames,   FaultScene::writingMovie,
            FaultScene::listing,      FaultScene::readingSettings, FaultScene::savingSettings};
}

std::string headingOf(FaultScene scene) {
    switch (scene) {
    case FaultScene::savingFrames:
        return "Saving frames";
    case FaultScene::readingFrames:
        return "Reading frames for a movie";
    case FaultScene::writingMovie:
        return "Writing a movie";
    case FaultScene::listing:
        return "Listing the folder";
    case FaultScene::readingSettings:
        return "Reading the settings";
    case FaultScene::savingSettings:
        return "Saving the settings";
    }
    return {};
}

std::string FaultCell::name() const {
    std::string name;
    bool isNewWord = true;
    for (const char c : headingOf(scene) + " " + call + " " + fault) {
        const auto byte = static_cast<unsigned char>(c);
        if (std::isalnum(byte) != 0) {
            name += isNewWord ? static_cast<char>(std::toupper(byte)) : c;
        }
        isNewWord = std::isalnum(byte) == 0;
    }
    return name;
}

void PrintTo(const FaultCell& cell, std::ostream* out) {
    *out << cell.setting;
}

std::vector<FaultCell> faultCells() {
    std::vector<FaultCell> cells;
    addSavingFrames(cells);
    addReadingFrames(cells);
    addWritingMovie(cells);
    addListing(cells);
    addReadingSettings(cells);
    addSavingSettings(cells);
    return cells;
}

std::vector<ImpossibleFaults> impossibleFaults() {
    return {
        {"open and opendir, to read; read; readdir", "ENOSPC, EDQUOT, EROFS",
         "Reading needs no room."},
        {"all but write", "short writes", "Only a write can be short."},
        {"read, write, fsync", "ENOENT", "The file is open already, whatever its name."},
        {"read, write, fsync, rename, readdir", "EMFILE", "These calls open nothing."},
        {"pthread_create", "all but EAGAIN", "It touches no disk, and knows no other error."},
        {"malloc", "all but ENOMEM", "It touches no disk, and knows no other error."},
        {"malloc", "ENOMEM for a small block",
         "Linux grants small blocks before it has the memory, and kills a process when there is "
         "none. Nothing is lost then that a killed program does not lose."},
        {"fsync and rename, saving frames", "all", "Frames are written in place, and not flushed."},
    };
}

} // namespace vistrane
