#include <memory>
#include <string>
#include <vector>

#include <QAction>
#include <QMenu>

#include "backends/qt/menus/QtMenu.h"
#include "tests/contract/MenuContract.h"

namespace vistrane {
namespace {

/// Menus without a desktop.
class QtMenuBackend {
public:
    std::shared_ptr<NSMenu> menu() { return std::make_shared<QtMenu>(MenuIconMaker()); }

    std::vector<std::string> titles(NSMenu& menu) { return titlesOf(*qtMenu(menu)); }

    std::vector<std::string> submenuTitles(NSMenu& menu, std::size_t index) {
        return titlesOf(*action(menu, index)->menu<QMenu*>());
    }

    void choose(NSMenu& menu, std::size_t index) { action(menu, index)->trigger(); }

private:
    static QMenu* qtMenu(NSMenu& menu) { return dynamic_cast<QtMenu&>(menu).qtMenu(); }

    static QAction* action(NSMenu& menu, std::size_t index) {
        return qtMenu(menu)->actions().at(static_cast<qsizetype>(index));
    }

    static std::vector<std::string> titlesOf(const QMenu& menu) {
        std::vector<std::string> titles;
        for (const QAction* const entry : menu.actions()) {
            titles.push_back(entry->text().replace("&&", "&").toStdString());
        }
        return titles;
    }
};

INSTANTIATE_TYPED_TEST_SUITE_P(Qt, MenuContract, QtMenuBackend, contract::Names);

} // namespace
} // namespace vistrane
