#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <thread>
#include <vector>

#include <gmock/gmock.h>

#include "platform/avfoundation/AVCaptureDevice.h"
#include "platform/avfoundation/AVCapturePhotoOutput.h"
#include "platform/avfoundation/AVCaptureSession.h"
#include "tests/contract/contract.h"

namespace vistrane {

/// Tests sessions and stills. A backend has
///
///     auto& cameras();                                      an AVFoundation, or its capture half
///     std::shared_ptr<AVCaptureDevice> camera();            one that works, for video only
///     bool runUntil(const std::function<bool()>& done);     runs the main queue; returns done()
template <typename Backend>
class PhotoContract : public ::testing::Test {
protected:
    /// Records the outcomes of its requests.
    class Delegate final : public AVCapturePhotoCaptureDelegate {
    public:
        explicit Delegate(std::vector<const Delegate*>& order) : order_(order) {}

        void captureOutputDidFinishProcessingPhoto(AVCapturePhotoOutput& output,
                                                   const AVCapturePhoto* photo,
                                                   const std::optional<NSError>& error) override {
            EXPECT_NE(photo != nullptr, error.has_value());
            EXPECT_TRUE(!error || !error->localizedDescription.empty());
            EXPECT_EQ(std::this_thread::get_id(), mainThread_);
            order_.push_back(this);
            outputs.push_back(&output);
            errors += error ? 1 : 0;
        }

        std::vector<const AVCapturePhotoOutput*> outputs;
        int errors = 0;

    private:
        std::vector<const Delegate*>& order_;
        const std::thread::id mainThread_ = std::this_thread::get_id();
    };

    auto& cameras() { return backend_.cameras(); }

    void SetUp() override {
        session_ = cameras().captureSession();
        output_ = cameras().photoOutput();
        settings_ = cameras().photoSettings();
        ASSERT_TRUE(session_ && output_ && settings_);
        session_->setSessionPreset(AVCaptureSessionPresetPhoto);
        ASSERT_TRUE(session_->canAddOutput(*output_));
        session_->addOutput(output_);
    }
    void TearDown() override { session_->stopRunning(); }

    void addCamera() {
        const AVCaptureDeviceInputResult result =
            cameras().deviceInputWithDevice(backend_.camera());
        ASSERT_TRUE(result.input) << describe(result.error);
        EXPECT_FALSE(result.error);
        session_->addInput(result.input);
    }
    void run() {
        ASSERT_NO_FATAL_FAILURE(addCamera());
        session_->startRunning();
        ASSERT_TRUE(session_->isRunning());
    }

    void request(AVCapturePhotoOutput& output, AVCapturePhotoCaptureDelegate& delegate) {
        output.capturePhotoWithSettings(cameras().photoSettingsFromPhotoSettings(*settings_),
                                        delegate);
    }
    bool awaitOutcomes(std::size_t count) {
        return backend_.runUntil([this, count] { return order_.size() >= count; });
    }

    /// The delegates in the order of their calls. They outlive the backend.
    std::vector<const Delegate*> order_;
    Delegate first_{order_};
    Delegate second_{order_};
    Delegate third_{order_};
    Backend backend_;
    std::shared_ptr<AVCaptureSession> session_;
    std::shared_ptr<AVCapturePhotoOutput> output_;
    std::shared_ptr<AVCapturePhotoSettings> settings_;
};

TYPED_TEST_SUITE_P(PhotoContract);

TYPED_TEST_P(PhotoContract, NoDeviceGivesAnErrorAndNoInput) {
    const AVCaptureDeviceInputResult result = this->cameras().deviceInputWithDevice(nullptr);
    EXPECT_EQ(result.input, nullptr);
    ASSERT_TRUE(result.error);
    EXPECT_FALSE(result.error->localizedDescription.empty());
}

TYPED_TEST_P(PhotoContract, ASessionWithoutAnInputDoesNotRun) {
    EXPECT_FALSE(this->session_->isRunning());
    this->session_->startRunning();
    EXPECT_FALSE(this->session_->isRunning());
}

TYPED_TEST_P(PhotoContract, ASessionRunsFromStartToStop) {
    ASSERT_NO_FATAL_FAILURE(this->addCamera());
    EXPECT_FALSE(this->session_->isRunning());
    this->session_->startRunning();
    EXPECT_TRUE(this->session_->isRunning());
    this->session_->stopRunning();
    EXPECT_FALSE(this->session_->isRunning());
}

TYPED_TEST_P(PhotoContract, TheConnectionNeedsASessionWithAnInputOfItsMedium) {
    EXPECT_EQ(this->output_->connectionWithMediaType(AVMediaTypeVideo), nullptr);
    EXPECT_TRUE(this->session_->inputs().empty());
    ASSERT_NO_FATAL_FAILURE(this->addCamera());
    EXPECT_NE(this->output_->connectionWithMediaType(AVMediaTypeVideo), nullptr);
    EXPECT_EQ(this->output_->connectionWithMediaType(AVMediaTypeAudio), nullptr);
    EXPECT_EQ(this->cameras().photoOutput()->connectionWithMediaType(AVMediaTypeVideo), nullptr);
    ASSERT_EQ(this->session_->inputs().size(), 1U);
    this->session_->removeInput(*this->session_->inputs().front());
    EXPECT_TRUE(this->session_->inputs().empty());
    EXPECT_EQ(this->output_->connectionWithMediaType(AVMediaTypeVideo), nullptr);
}

TYPED_TEST_P(PhotoContract, SettingsDifferInTheirIds) {
    std::set<std::int64_t> ids{this->settings_->uniqueID()};
    for (int i = 0; i < 10; ++i) {
        ids.insert(this->cameras().photoSettings()->uniqueID());
        ids.insert(this->cameras().photoSettingsFromPhotoSettings(*this->settings_)->uniqueID());
    }
    EXPECT_EQ(ids.size(), 21U);
    EXPECT_TRUE(ids.contains(this->settings_->uniqueID()));
}

TYPED_TEST_P(PhotoContract, WithoutARunningSessionAnErrorComesLater) {
    // Before the start, after the stop, without a session.
    const std::shared_ptr<AVCapturePhotoOutput> loose = this->cameras().photoOutput();
    for (auto* output : {this->output_.get(), this->output_.get(), loose.get()}) {
        const std::size_t before = this->order_.size();
        this->request(*output, this->first_);
        EXPECT_EQ(this->order_.size(), before);
        ASSERT_TRUE(this->awaitOutcomes(before + 1));
        EXPECT_EQ(this->first_.errors, static_cast<int>(before + 1));
        EXPECT_EQ(this->first_.outputs.back(), output);
        if (before == 0) {
            ASSERT_NO_FATAL_FAILURE(this->run());
            this->session_->stopRunning();
        }
    }
}

TYPED_TEST_P(PhotoContract, ARunningSessionGivesAPhotoLater) {
    ASSERT_NO_FATAL_FAILURE(this->run());
    this->request(*this->output_, this->first_);
    EXPECT_TRUE(this->order_.empty());
    ASSERT_TRUE(this->awaitOutcomes(1));
    EXPECT_EQ(this->first_.errors, 0);
    EXPECT_THAT(this->first_.outputs, ::testing::ElementsAre(this->output_.get()));
}

TYPED_TEST_P(PhotoContract, EachRequestHasOneOutcomeInItsTurn) {
    ASSERT_NO_FATAL_FAILURE(this->run());
    for (auto* delegate : {&this->third_, &this->first_, &this->second_, &this->first_}) {
        this->request(*this->output_, *delegate);
    }
    EXPECT_TRUE(this->order_.empty());
    ASSERT_TRUE(this->awaitOutcomes(4));
    // A second outcome of an earlier request would come before this one.
    this->request(*this->output_, this->third_);
    ASSERT_TRUE(this->awaitOutcomes(5));
    EXPECT_THAT(this->order_, ::testing::ElementsAre(&this->third_, &this->first_, &this->second_,
                                                     &this->first_, &this->third_));
}

REGISTER_TYPED_TEST_SUITE_P(PhotoContract, NoDeviceGivesAnErrorAndNoInput,
                            ASessionWithoutAnInputDoesNotRun, ASessionRunsFromStartToStop,
                            TheConnectionNeedsASessionWithAnInputOfItsMedium,
                            SettingsDifferInTheirIds, WithoutARunningSessionAnErrorComesLater,
                            ARunningSessionGivesAPhotoLater, EachRequestHasOneOutcomeInItsTurn);

} // namespace vistrane
