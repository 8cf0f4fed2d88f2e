#include "tests/soak/CompileFolder.h"

#include <cstdio>
#include <utility>

#include <gtest/gtest.h>

#include "tests/frontends/commandline/CommandLineTest.h"
#include "tests/frontends/commandline/frame_files.h"
#include "tests/support/movie_boxes.h"
#include "tests/support/movie_facts.h"

namespace vistrane {

namespace {

constexpr char unfinished[] = ".mov.vistrane-part";

} // namespace

void expectWholeMovie(const std::string& path, const MovieForm& form) {
    EXPECT_FALSE(boxesOf(path).empty()) << path;

    const MovieFacts facts = movieFacts(path);
    EXPECT_EQ(facts.width, form.width);
    EXPECT_EQ(facts.height, form.height);
    EXPECT_EQ(facts.timeBase, "1/" + std::to_string(form.rate));
    EXPECT_EQ(facts.times, frameTimes(form.frames));
    EXPECT_EQ(facts.decodedTimes, facts.times);
    // The first frame lasts two periods.
    const long periods = form.frames + 1;
    EXPECT_EQ(facts.duration, periods);

    const std::string size = std::to_string(form.width) + " " + std::to_string(form.height);
    EXPECT_EQ(mediaInfo(path, "Video;%FrameCount% %Width% %Height% %Duration%"),
              std::to_string(form.frames) + " " + size + " " +
                  std::to_string((1000 * periods + form.rate / 2) / form.rate));

    const DemuxedMovie demuxed = demuxedByGStreamer(path);
    EXPECT_EQ(demuxed.frames, form.frames);
    EXPECT_EQ(demuxed.width, form.width);
    EXPECT_EQ(demuxed.height, form.height);
    EXPECT_NEAR(demuxed.seconds * form.rate, static_cast<double>(periods), 0.01);
}

void writeNoiseFrames(const std::string& folder, const MovieForm& form) {
    FrameForm frame;
    frame.width = form.width;
    frame.height = form.height;
    frame.isNoise = true;
    for (int number = 1; number <= form.frames; ++number) {
        char name[16];
        std::snprintf(name, sizeof name, "/%02d.png", number);
        frame.colour[0] = number;
        writeFrame(folder + name, frame);
    }
}

CompileFolder::CompileFolder(std::string path, const MovieForm& form)
    : path_(std::move(path)), form_(form) {
    writeNoiseFrames(path_, form);
    writeFile(path_ + "/20240101-120000.mov", "an earlier movie");
    for (const std::string& name : namesIn(path_)) {
        before_[name] = contentsOf(path_ + "/" + name);
    }
}

bool CompileFolder::hasUnfinishedMovie() const {
    return !namesEndingIn(unfinished, path_).empty();
}

CompileFolder::Found CompileFolder::check() const {
    for (const auto& [name, contents] : before_) {
        EXPECT_TRUE(contentsOf(path_ + "/" + name) == contents) << name << " is not what it was";
    }
    Found found;
    for (const std::string& name : namesIn(path_)) {
        if (before_.count(name) > 0) {
            continue;
        }
        SCOPED_TRACE(name);
        const std::string path = path_ + "/" + name;
        if (name.front() != '.' && name.ends_with(".mov")) {
            ++found.movies;
            expectWholeMovie(path, form_);
            std::filesystem::remove(path);
        } else {
            ++found.leftovers;
            EXPECT_TRUE(name.front() == '.' && name.ends_with(unfinished));
        }
    }
    return found;
}

} // namespace vistrane
