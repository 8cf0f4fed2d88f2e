#pragma once

#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "platform/appkit/NSMenu.h"
#include "tests/contract/contract.h"

namespace vistrane {

/// Menus and their items. A backend has
///
///     std::shared_ptr<NSMenu> menu();                   a new one
///     std::vector<std::string> titles(NSMenu&);         as they are shown, in order
///     std::vector<std::string> submenuTitles(NSMenu&, std::size_t index);   of an item's submenu
///     void choose(NSMenu&, std::size_t index);          as the user does
template <typename Backend>
class MenuContract : public ::testing::Test {
protected:
    class Target final : public NSObject {};

    std::shared_ptr<NSMenuItem> add(NSMenu& menu, const std::string& title) {
        return menu.addItemWithTitle(
            title, [this](NSObject* sender) { senders_.push_back(sender); }, "");
    }

    Backend backend_;
    Target target_;
    std::vector<NSObject*> senders_;
};

TYPED_TEST_SUITE_P(MenuContract);

TYPED_TEST_P(MenuContract, ItemsStandInTheOrderInWhichTheyWereAdded) {
    const auto menu = this->backend_.menu();
    EXPECT_THAT(this->backend_.titles(*menu), ::testing::IsEmpty());
    this->add(*menu, "second comes first");
    this->add(*menu, "Day & Night");
    this->add(*menu, "");
    EXPECT_THAT(this->backend_.titles(*menu),
                ::testing::ElementsAre("second comes first", "Day & Night", ""));
}

TYPED_TEST_P(MenuContract, AChosenItemIsTheSenderOfItsAction) {
    const auto menu = this->backend_.menu();
    const auto first = this->add(*menu, "one title");
    const auto second = this->add(*menu, "one title");
    first->setTarget(&this->target_);
    second->setTarget(&this->target_);
    this->backend_.choose(*menu, 1);
    this->backend_.choose(*menu, 0);
    EXPECT_THAT(this->senders_, ::testing::ElementsAre(second.get(), first.get()));
}

TYPED_TEST_P(MenuContract, AnItemWithoutTargetOrActionSendsNothing) {
    const auto menu = this->backend_.menu();
    const auto item = this->add(*menu, "item");
    this->backend_.choose(*menu, 0);
    item->setTarget(&this->target_);
    item->setTarget(nullptr);
    this->backend_.choose(*menu, 0);
    menu->addItemWithTitle("without action", {}, "")->setTarget(&this->target_);
    this->backend_.choose(*menu, 1);
    EXPECT_THAT(this->senders_, ::testing::IsEmpty());
}

TYPED_TEST_P(MenuContract, AnItemHasNoRepresentedObjectUntilItIsSet) {
    const auto menu = this->backend_.menu();
    const auto item = this->add(*menu, "item");
    EXPECT_FALSE(item->representedObject().has_value());
    for (const char* const object : {"", "Day & Night"}) {
        item->setRepresentedObject(object);
        EXPECT_EQ(item->representedObject(), object);
    }
}

TYPED_TEST_P(MenuContract, AnItemKeepsItsSubmenuAndALaterOneReplacesIt) {
    const auto menu = this->backend_.menu();
    const auto item = this->add(*menu, "item");
    for (const char* const title : {"earlier", "later"}) {
        const auto submenu = this->backend_.menu();
        this->add(*submenu, title);
        item->setSubmenu(submenu);
    }
    EXPECT_THAT(this->backend_.submenuTitles(*menu, 0), ::testing::ElementsAre("later"));
}

TYPED_TEST_P(MenuContract, CancellingAClosedMenuChoosesNothingAndKeepsItsItems) {
    const auto menu = this->backend_.menu();
    this->add(*menu, "item")->setTarget(&this->target_);
    menu->cancelTracking();
    EXPECT_THAT(this->senders_, ::testing::IsEmpty());
    this->backend_.choose(*menu, 0);
    EXPECT_THAT(this->senders_, ::testing::SizeIs(1));
}

REGISTER_TYPED_TEST_SUITE_P(MenuContract, ItemsStandInTheOrderInWhichTheyWereAdded,
                            AChosenItemIsTheSenderOfItsAction,
                            AnItemWithoutTargetOrActionSendsNothing,
                            AnItemHasNoRepresentedObjectUntilItIsSet,
                            AnItemKeepsItsSubmenuAndALaterOneReplacesIt,
                            CancellingAClosedMenuChoosesNothingAndKeepsItsItems);

} // namespace vistrane
