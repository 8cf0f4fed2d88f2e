#pragma once

#include <map>
#include <string>
#include <vector>

namespace vistrane {

/// The movie that a folder of frames gives.
struct MovieForm {
    int frames = 0;
    int width = 0;
    int height = 0;
    /// Frames per second.
    int rate = 30;
};

/// Checks that ffprobe, mediainfo and GStreamer find the same complete movie.
void expectWholeMovie(const std::string& path, const MovieForm& form);

/// Writes frames of noise, which keep the encoder busy: 01.png and so on.
void writeNoiseFrames(const std::string& folder, const MovieForm& form);

/// A project folder in which compiles are interrupted. Its files must survive that.
class CompileFolder {
public:
    /// Writes the frames, and a file with an earlier movie's name.
    CompileFolder(std::string path, const MovieForm& form);

    const std::string& path() const { return path_; }
    /// Whether an unfinished movie is there. Any process may be writing it.
    bool hasUnfinishedMovie() const;

    /// What a compile left in the folder.
    struct Found {
        int movies = 0;
        int leftovers = 0;
    };
    /// Checks that all earlier files are unchanged, and that everything else is a complete movie or
    /// a hidden leftover. Removes the movies.
    Found check() const;

private:
    std::string path_;
    MovieForm form_;
    /// The contents of all files by their names.
    std::map<std::string, std::string> before_;
};

} // namespace vistrane
