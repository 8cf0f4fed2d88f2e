#include <algorithm>

#include "backends/sim/Sim.h"
#include "tests/contract/AlertContract.h"
#include "tests/contract/BookmarkContract.h"
#include "tests/contract/ControlContract.h"
#include "tests/contract/DispatchContract.h"
#include "tests/contract/FileManagerContract.h"
#include "tests/contract/LocaleContract.h"
#include "tests/contract/MenuContract.h"
#include "tests/contract/NibContract.h"
#include "tests/contract/ProgressContract.h"
#include "tests/contract/ThreadContract.h"
#include "tests/contract/TimerContract.h"
#include "tests/contract/UserDefaultsContract.h"

namespace vistrane {
namespace {

/// Threads run from the loop, so that they end in virtual time.
class SimBackend {
public:
    SimBackend() {
        sim_.threads().onStart([this](SimThread& thread) {
            sim_.at(0.0, [held = thread.shared_from_this()] { held->run(); });
        });
    }

    Foundation& foundation() { return sim_.platform().foundation; }
    Dispatch& dispatch() { return sim_.platform().dispatch; }
    void stall(double seconds) { sim_.stall(seconds); }
    void skip(double seconds) { sim_.stall(seconds); }

    std::shared_ptr<const NSLocale> locale() { return foundation().currentLocale(); }
    NSUserDefaults& userDefaults() { return foundation().standardUserDefaults(); }
    void storeText(const std::string& text, const std::string& key) {
        sim_.defaults().values[key] = text;
    }
    bool reopen() {
        // Another start of the program: what was not synchronised is lost.
        sim_.defaults().values = sim_.defaults().durableValues;
        return true;
    }

    NSFileManager& fileManager() { return foundation().defaultManager(); }
    std::string emptyFolder() {
        sim_.files().addFolder("/f");
        return "/f";
    }
    void addFile(const std::string& path) { sim_.files().addFile(path); }
    void addFolder(const std::string& path) { sim_.files().addFolder(path); }
    void removeAll(const std::string& path) { sim_.files().remove(path); }
    void settle() {}

    std::shared_ptr<NSButton> button() { return outlet<NSButton>("oneB"); }
    std::shared_ptr<NSTextField> textField() { return outlet<NSTextField>("hInput"); }
    std::string text(NSTextField& field) { return dynamic_cast<SimTextField&>(field).text; }
    std::shared_ptr<NSSlider> slider() {
        sim_.nib().slider("photoSlider").setRange(0.0, 0.0);
        return outlet<NSSlider>("photoSlider");
    }
    std::shared_ptr<NSPopUpButton> popUp() { return outlet<NSPopUpButton>("AVDevicePopUp"); }
    std::vector<std::string> titles(NSPopUpButton& popUp) {
        return dynamic_cast<SimPopUpButton&>(popUp).items;
    }
    void pick(NSPopUpButton& popUp, NSInteger index) {
        dynamic_cast<SimPopUpButton&>(popUp).selected = index;
    }
    std::shared_ptr<NSImageView> imageView() { return outlet<NSImageView>("myDisplay"); }
    std::shared_ptr<NSWindow> window() { return outlet<NSWindow>("myWindow"); }

    std::shared_ptr<NSMenu> menu() { return sim_.platform().appKit.menu(); }
    std::vector<std::string> titles(NSMenu& menu) { return titlesOf(simMenu(menu)); }
    std::vector<std::string> submenuTitles(NSMenu& menu, std::size_t index) {
        return titlesOf(simMenu(*simMenu(menu).items.at(index)->submenu));
    }
    void choose(NSMenu& menu, std::size_t index) { simMenu(menu).items.at(index)->choose(); }

    std::shared_ptr<NSProgressIndicator> progressBar() {
        return outlet<NSProgressIndicator>("progressBar");
    }
    double shownPart(NSProgressIndicator& bar) {
        const auto& shown = dynamic_cast<SimProgressIndicator&>(bar);
        return std::min(shown.value / shown.maximum, 1.0);
    }

    NSNib& nib() { return sim_.nib(); }
    std::string missingOutlet() {
        sim_.nib().leaveOut("noSuchControl");
        return "noSuchControl";
    }
    void click(const std::string& name, const std::string& selector) {
        sim_.nib().send(selector, outlet<NSButton>(name).get());
    }

    std::unique_ptr<NSAlert> alert() { return sim_.platform().appKit.alert(); }
    std::unique_ptr<NSAlert> alertWithError(const NSError& error) {
        return sim_.platform().appKit.alertWithError(error);
    }
    std::shared_ptr<NSView> view() { return outlet<NSView>("previewView"); }
    void answerNextAlert(NSInteger button, double seconds) {
        sim_.alerts().answer(NSAlertFirstButtonReturn + button);
        sim_.alerts().stayUp(seconds);
    }
    /// Without an answer of the script it is the first button that is pressed.
    void confirmNextAlert(double seconds) { sim_.alerts().stayUp(seconds); }

private:
    static SimMenu& simMenu(NSMenu& menu) { return dynamic_cast<SimMenu&>(menu); }
    static std::vector<std::string> titlesOf(const SimMenu& menu) {
        std::vector<std::string> titles;
        for (const auto& item : menu.items) {
            titles.push_back(item->title);
        }
        return titles;
    }

    template <typename Control>
    std::shared_ptr<Control> outlet(const std::string& name) {
        std::shared_ptr<Control> field;
        sim_.nib().outlet(name, field);
        return field;
    }

    Sim sim_;
};

INSTANTIATE_TYPED_TEST_SUITE_P(Sim, AlertContract, SimBackend, contract::Names);
INSTANTIATE_TYPED_TEST_SUITE_P(Sim, BookmarkContract, SimBackend, contract::Names);
INSTANTIATE_TYPED_TEST_SUITE_P(Sim, ControlContract, SimBackend, contract::Names);
INSTANTIATE_TYPED_TEST_SUITE_P(Sim, DispatchContract, SimBackend, contract::Names);
INSTANTIATE_TYPED_TEST_SUITE_P(Sim, FileManagerContract, SimBackend, contract::Names);
INSTANTIATE_TYPED_TEST_SUITE_P(Sim, LocaleContract, SimBackend, contract::Names);
INSTANTIATE_TYPED_TEST_SUITE_P(Sim, MenuContract, SimBackend, contract::Names);
INSTANTIATE_TYPED_TEST_SUITE_P(Sim, NibContract, SimBackend, contract::Names);
INSTANTIATE_TYPED_TEST_SUITE_P(Sim, ProgressContract, SimBackend, contract::Names);
INSTANTIATE_TYPED_TEST_SUITE_P(Sim, ThreadContract, SimBackend, contract::Names);
INSTANTIATE_TYPED_TEST_SUITE_P(Sim, TimerContract, SimBackend, contract::Names);
INSTANTIATE_TYPED_TEST_SUITE_P(Sim, UserDefaultsContract, SimBackend, contract::Names);

} // namespace
} // namespace vistrane
