#pragma once

#include "tests/support/ControllerTest.h"

namespace vistrane {

/// A controller with the project folder "/f" and a frame list that the test sets.
class CompilerTest : public ControllerTest {
protected:
    void SetUp() override {
        sim.files().addFolder("/f");
        folderTitle() = "/f";
        slider("fpsS").drag(25.0);
    }

    static std::string path(int number) { return "/f/" + std::to_string(number) + ".png"; }

    /// A frame list of that many pictures, "/f/0.png" first; the files are there.
    void setFrames(int count) {
        auto frames = std::make_shared<std::vector<std::string>>();
        for (int number = 0; number < count; ++number) {
            frames->push_back(path(number));
            if (!sim.files().exists(path(number))) {
                sim.files().addFile(path(number));
            }
        }
        delegate.pictureArray.store(frames);
    }

    /// Starts a compile and runs its thread, without the work that it posts to the queues.
    void compile() {
        delegate.genneratingMovie(nullptr);
        sim.takeCalls();
        sim.runThread(sim.threads().count());
    }

    std::string moviePath() { return *delegate.finalMoviePath.load(); }

    void expectNothingLeft() {
        EXPECT_EQ(sim.drawing().livePixelBuffers(), 0U);
        EXPECT_EQ(sim.drawing().leftovers(), 0);
    }

    /// The presentation times of all pictures given to a writer so far.
    std::vector<CMTime> times() {
        std::vector<CMTime> all;
        for (const SimAppend& append : sim.movies().appends()) {
            all.push_back(append.time);
        }
        return all;
    }
};

} // namespace vistrane
