#pragma once

#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "backends/sim/Sim.h"
#include "core/infopanel/mantisQRXpanel.h"
#include "core/infopanel/promotions.h"
#include "tests/support/procedure.h"

namespace vistrane {

/// An info panel whose outlets are connected to a sim's controls. Every test also proves that no
/// interface's contract was breached.
class PanelTest : public ::testing::Test {
protected:
    PanelTest() {
        for (const std::string& title : promotionTitles()) {
            sim.pictures().resources.insert(title);
        }
        panel.connectInterface(sim.nib());
    }

    void TearDown() override { EXPECT_THAT(sim.misuses(), ::testing::IsEmpty()); }

    /// Wakes the panel and forgets the calls that this took.
    void wake() {
        panel.awakeFromNib();
        sim.takeCalls();
    }

    /// A setting as it would survive a crash; -1 without one.
    NSInteger savedInteger(const std::string& key) {
        const auto& saved = sim.defaults().durableValues;
        const auto found = saved.find(key);
        return found == saved.end() ? -1 : std::get<NSInteger>(found->second);
    }

    std::string pageText() { return sim.nib().textField("tipText").text; }
    std::string pagePicture() { return nameOf(sim.nib().imageView("tipImage").image.get()); }
    std::string counter() { return sim.nib().textField("picCount").text; }

    Sim sim;
    mantisQRXpanel panel{sim.platform()};
};

} // namespace vistrane
