#include <filesystem>
#include <fstream>

#include "backends/pictures/MediaCoreVideo.h"
#include "tests/backends/movies/MovieTest.h"
#include "tests/contract/AssetWriterContract.h"

namespace vistrane {
namespace {

class MovieBackend {
public:
    Movies& movies() { return movies_; }
    CoreVideo& coreVideo() { return coreVideo_; }
    std::string emptyFolder() { return folder_.path(); }
    void addFile(const std::string& path) { std::ofstream(path) << "content"; }
    bool exists(const std::string& path) { return std::filesystem::exists(path); }
    /// The observer is told after the handler has returned.
    void awaitEnd(const std::string& path) { observer_.outcome(path); }

private:
    WorkFolder folder_;
    RecordingObserver observer_;
    MediaCoreVideo coreVideo_;
    Movies movies_{observer_};
};

INSTANTIATE_TYPED_TEST_SUITE_P(Media, AssetWriterContract, MovieBackend, contract::Names);

} // namespace
} // namespace vistrane
