#pragma once

#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <thread>

#include <gmock/gmock.h>

#include "platform/appkit/NSButton.h"
#include "platform/appkit/NSImageView.h"
#include "platform/appkit/NSPopUpButton.h"
#include "platform/appkit/NSSlider.h"
#include "platform/appkit/NSTextField.h"
#include "platform/appkit/NSWindow.h"
#include "tests/contract/contract.h"

namespace vistrane {

/// The plain controls. A backend has
///
///     std::shared_ptr<NSButton> button();
///     std::shared_ptr<NSTextField> textField();
///     std::string text(NSTextField&);            what the field shows
///     std::shared_ptr<NSSlider> slider();        from 0 to 0
///     std::shared_ptr<NSPopUpButton> popUp();    empty
///     std::vector<std::string> titles(NSPopUpButton&);
///     void pick(NSPopUpButton&, NSInteger index);      as the user does
///     std::shared_ptr<NSImageView> imageView();
///     std::shared_ptr<NSWindow> window();
template <typename Backend>
class ControlContract : public ::testing::Test {
protected:
    std::shared_ptr<NSSlider> sliderUpTo(double maximum) {
        const std::shared_ptr<NSSlider> slider = backend_.slider();
        slider->setMaxValue(maximum);
        return slider;
    }
    std::shared_ptr<NSTextField> fieldWith(const std::string& text) {
        const std::shared_ptr<NSTextField> field = backend_.textField();
        field->setStringValue(text);
        return field;
    }

    Backend backend_;
};

TYPED_TEST_SUITE_P(ControlContract);

TYPED_TEST_P(ControlContract, AButtonKeepsItsTitleByteForByte) {
    const auto button = this->backend_.button();
    for (const std::string title : {"", " a  b ", "&File", "/tmp/\xff\xfe", "two\nlines"}) {
        button->setTitle(title);
        EXPECT_EQ(button->title(), title);
    }
}

TYPED_TEST_P(ControlContract, AButtonKeepsItsState) {
    const auto button = this->backend_.button();
    button->setState(NSControlStateValueOn);
    EXPECT_EQ(button->state(), 1);
    button->setState(NSControlStateValueOff);
    EXPECT_EQ(button->state(), 0);
}

TYPED_TEST_P(ControlContract, AButtonMayBeEnabledByAnyThread) {
    const auto button = this->backend_.button();
    std::thread other([&] {
        button->setEnabled(false);
        button->setEnabled(true);
    });
    other.join();
    button->setTitle("still usable");
    EXPECT_EQ(button->title(), "still usable");
}

TYPED_TEST_P(ControlContract, AFieldReadsTheLeadingInteger) {
    EXPECT_EQ(this->fieldWith("7x")->intValue(), 7);
    EXPECT_EQ(this->fieldWith("7.9")->intValue(), 7);
    EXPECT_EQ(this->fieldWith("  42")->intValue(), 42);
    EXPECT_EQ(this->fieldWith("-5")->intValue(), -5);
    EXPECT_EQ(this->fieldWith("+5")->integerValue(), 5);
    EXPECT_EQ(this->fieldWith("- 5")->integerValue(), 0);
    EXPECT_EQ(this->fieldWith("abc")->integerValue(), 0);
    EXPECT_EQ(this->fieldWith("")->intValue(), 0);
    EXPECT_EQ(this->fieldWith("00012")->integerValue(), 12);
}

TYPED_TEST_P(ControlContract, AFieldLimitsNumbersThatAreOutOfRange) {
    using Int = std::numeric_limits<std::int32_t>;
    using Long = std::numeric_limits<std::int64_t>;
    EXPECT_EQ(this->fieldWith("2147483648")->intValue(), Int::max());
    EXPECT_EQ(this->fieldWith("-2147483649")->intValue(), Int::min());
    EXPECT_EQ(this->fieldWith("2147483648")->integerValue(), 2147483648);
    EXPECT_EQ(this->fieldWith("9223372036854775808")->integerValue(), Long::max());
    EXPECT_EQ(this->fieldWith("-9223372036854775809")->integerValue(), Long::min());
    EXPECT_EQ(this->fieldWith(std::string(100, '9'))->intValue(), Int::max());
}

TYPED_TEST_P(ControlContract, AFieldShowsATextOrTheDigitsOfANumber) {
    EXPECT_EQ(this->backend_.text(*this->fieldWith("( t = 5 s )")), "( t = 5 s )");
    const auto field = this->backend_.textField();
    field->setIntValue(-12);
    EXPECT_EQ(this->backend_.text(*field), "-12");
    field->setIntegerValue(5000000000);
    EXPECT_EQ(this->backend_.text(*field), "5000000000");
    EXPECT_EQ(field->integerValue(), 5000000000);
    EXPECT_EQ(field->intValue(), std::numeric_limits<std::int32_t>::max());
}

TYPED_TEST_P(ControlContract, ASliderLimitsWhatIsSet) {
    const auto slider = this->sliderUpTo(10.0);
    slider->setMinValue(2.0);
    slider->setIntegerValue(7);
    EXPECT_EQ(slider->integerValue(), 7);
    slider->setIntegerValue(11);
    EXPECT_EQ(slider->integerValue(), 10);
    slider->setIntegerValue(std::numeric_limits<NSInteger>::max());
    EXPECT_EQ(slider->intValue(), 10);
    slider->setIntegerValue(std::numeric_limits<NSInteger>::min());
    EXPECT_EQ(slider->intValue(), 2);
}

TYPED_TEST_P(ControlContract, ASlidersRangeLimitsItsValue) {
    const auto slider = this->sliderUpTo(10.0);
    slider->setIntegerValue(8);
    slider->setMaxValue(5.0);
    EXPECT_EQ(slider->intValue(), 5);
    slider->setMaxValue(10.0);
    EXPECT_EQ(slider->intValue(), 5);
    slider->setMinValue(6.0);
    EXPECT_EQ(slider->intValue(), 6);
    EXPECT_EQ(slider->floatValue(), 6.0F);
}

TYPED_TEST_P(ControlContract, ASliderRoundsToTheNearestAndHalvesAwayFromZero) {
    const auto slider = this->backend_.slider();
    const auto valueAt = [&](double value) {
        slider->setMinValue(-100.0);
        slider->setMaxValue(value);
        slider->setIntegerValue(100);
        return slider->intValue();
    };
    EXPECT_EQ(valueAt(2.49), 2);
    EXPECT_EQ(valueAt(2.5), 3);
    EXPECT_EQ(valueAt(2.51), 3);
    EXPECT_EQ(valueAt(-2.49), -2);
    EXPECT_EQ(valueAt(-2.5), -3);
    EXPECT_EQ(slider->integerValue(), -3);
    EXPECT_EQ(slider->floatValue(), -2.5F);
}

TYPED_TEST_P(ControlContract, WithASlidersRangeUpsideDownTheMinimumHolds) {
    const auto slider = this->sliderUpTo(1.0);
    slider->setMinValue(5.0);
    EXPECT_EQ(slider->floatValue(), 5.0F);
    slider->setIntegerValue(3);
    EXPECT_EQ(slider->floatValue(), 5.0F);
}

TYPED_TEST_P(ControlContract, ASlidersNumbersThatAreOutOfRangeGiveTheNearest) {
    using Int = std::numeric_limits<std::int32_t>;
    const auto slider = this->sliderUpTo(1e300);
    slider->setMinValue(1e300);
    EXPECT_EQ(slider->intValue(), Int::max());
    EXPECT_EQ(slider->integerValue(), std::numeric_limits<NSInteger>::max());
    EXPECT_EQ(slider->floatValue(), std::numeric_limits<float>::max());
    slider->setMinValue(-1e300);
    slider->setMaxValue(-1e300);
    EXPECT_EQ(slider->intValue(), Int::min());
    EXPECT_EQ(slider->integerValue(), std::numeric_limits<NSInteger>::min());
    EXPECT_EQ(slider->floatValue(), std::numeric_limits<float>::lowest());
    slider->setMaxValue(2147483647.5);
    slider->setMinValue(2147483647.5);
    EXPECT_EQ(slider->intValue(), Int::max());
    EXPECT_EQ(slider->integerValue(), 2147483648);
}

TYPED_TEST_P(ControlContract, WhatIsNoNumberIsNoEndOfASlidersRange) {
    const auto slider = this->sliderUpTo(60.0);
    slider->setMinValue(1.0);
    slider->setMaxValue(std::numeric_limits<double>::quiet_NaN());
    slider->setMinValue(std::numeric_limits<double>::quiet_NaN());
    slider->setIntegerValue(100);
    EXPECT_EQ(slider->intValue(), 60);
    slider->setIntegerValue(0);
    EXPECT_EQ(slider->intValue(), 1);
}

TYPED_TEST_P(ControlContract, AnEmptyListHasNoSelectionAndItsFirstItemIsSelected) {
    const auto popUp = this->backend_.popUp();
    EXPECT_EQ(popUp->indexOfSelectedItem(), -1);
    popUp->addItemWithTitle("A");
    EXPECT_EQ(popUp->indexOfSelectedItem(), 0);
    popUp->addItemWithTitle("B");
    EXPECT_EQ(popUp->indexOfSelectedItem(), 0);
    popUp->removeAllItems();
    EXPECT_EQ(popUp->indexOfSelectedItem(), -1);
    // Also when it is replaced.
    for (int times = 0; times < 2; ++times) {
        popUp->addItemWithTitle("C");
        EXPECT_EQ(popUp->indexOfSelectedItem(), 0);
    }
    EXPECT_THAT(this->backend_.titles(*popUp), ::testing::ElementsAre("C"));
}

TYPED_TEST_P(ControlContract, AnItemOfTheSameTitleIsReplacedByOneAtTheEnd) {
    const auto popUp = this->backend_.popUp();
    for (const char* title : {"A", "B", "C", "B"}) {
        popUp->addItemWithTitle(title);
    }
    EXPECT_THAT(this->backend_.titles(*popUp), ::testing::ElementsAre("A", "C", "B"));
    EXPECT_EQ(popUp->indexOfSelectedItem(), 0);
}

TYPED_TEST_P(ControlContract, WhenTheSelectedItemIsReplacedTheFirstOfTheOthersIsSelected) {
    for (const NSInteger selected : {0, 1, 2}) {
        const auto popUp = this->backend_.popUp();
        popUp->removeAllItems();
        for (const char* title : {"A", "B", "C"}) {
            popUp->addItemWithTitle(title);
        }
        this->backend_.pick(*popUp, selected);
        popUp->addItemWithTitle(std::string(1, static_cast<char>('A' + selected)));
        EXPECT_EQ(popUp->indexOfSelectedItem(), 0) << selected;
    }
}

TYPED_TEST_P(ControlContract, TheSelectionStaysWithItsItem) {
    const auto popUp = this->backend_.popUp();
    for (const char* title : {"A", "B", "C"}) {
        popUp->addItemWithTitle(title);
    }
    this->backend_.pick(*popUp, 2);
    EXPECT_EQ(popUp->indexOfSelectedItem(), 2);
    popUp->addItemWithTitle("A");
    EXPECT_THAT(this->backend_.titles(*popUp), ::testing::ElementsAre("B", "C", "A"));
    EXPECT_EQ(popUp->indexOfSelectedItem(), 1);
}

TYPED_TEST_P(ControlContract, AViewHasALayerWhenOneIsWanted) {
    const auto view = this->backend_.imageView();
    EXPECT_EQ(view->layer(), nullptr);
    view->setWantsLayer(true);
    const std::shared_ptr<CALayer> layer = view->layer();
    ASSERT_NE(layer, nullptr);
    layer->setBackgroundColor(CGColorGetConstantColor(kCGColorBlack));
    EXPECT_EQ(view->layer(), layer);
    view->setWantsLayer(true);
    EXPECT_EQ(view->layer(), layer);
}

TYPED_TEST_P(ControlContract, NullPicturesAndRespondersAreTaken) {
    const auto button = this->backend_.button();
    button->setImage(nullptr);
    button->setAlternateImage(nullptr);
    const auto view = this->backend_.imageView();
    view->setImage(nullptr);
    view->setNeedsDisplay(true);
    EXPECT_TRUE(this->backend_.window()->makeFirstResponder(nullptr));
}

REGISTER_TYPED_TEST_SUITE_P(
    ControlContract, AButtonKeepsItsTitleByteForByte, AButtonKeepsItsState,
    AButtonMayBeEnabledByAnyThread, AFieldReadsTheLeadingInteger,
    AFieldLimitsNumbersThatAreOutOfRange, AFieldShowsATextOrTheDigitsOfANumber,
    ASliderLimitsWhatIsSet, ASlidersRangeLimitsItsValue,
    ASliderRoundsToTheNearestAndHalvesAwayFromZero, WithASlidersRangeUpsideDownTheMinimumHolds,
    ASlidersNumbersThatAreOutOfRangeGiveTheNearest, WhatIsNoNumberIsNoEndOfASlidersRange,
    AnEmptyListHasNoSelectionAndItsFirstItemIsSelected, AnItemOfTheSameTitleIsReplacedByOneAtTheEnd,
    WhenTheSelectedItemIsReplacedTheFirstOfTheOthersIsSelected, TheSelectionStaysWithItsItem,
    AViewHasALayerWhenOneIsWanted, NullPicturesAndRespondersAreTaken);

} // namespace vistrane
