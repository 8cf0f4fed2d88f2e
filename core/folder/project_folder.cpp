#include "core/folder/project_folder.h"

#include "core/app/AppDelegate.h"
#include "core/app/standard_alert.h"
#include "platform/appkit/AppKit.h"
#include "platform/foundation/Foundation.h"
#include "platform/foundation/NSString.h"

namespace vistrane {

namespace {

/// The only checks of a choice. Neither the volume nor the access rights are checked, on purpose,
/// whatever the alert says.
bool isWorkingFolder(const std::optional<std::string>& path) {
    return path && !path->empty() && *path != "/";
}

std::unique_ptr<NSOpenPanel> folderPanel(AppKit& appKit) {
    auto panel = appKit.openPanel();
    panel->setTitle("Select Output Folder to Save the Capture");
    panel->setCanChooseDirectories(true);
    panel->setCanCreateDirectories(true);
    panel->setAllowsMultipleSelection(false);
    panel->setCanChooseFiles(false);
    panel->setPrompt("Save to This Folder");
    return panel;
}

bool confirmFolder(AppKit& appKit, const std::string& path) {
    const auto alert = appKit.alert();
    alert->setMessageText("Destination Path Confirmation:");
    alert->setInformativeText(
        stringWithFormat("%@%@%@", {"All Capturess will be saved to: ", path, "\n"}));
    alert->addButtonWithTitle("Ok");
    alert->addButtonWithTitle("Cancel");
    return alert->runModal() == NSAlertFirstButtonReturn;
}

void rememberFolder(Foundation& foundation, const NSURL& url) {
    const BookmarkDataResult bookmark =
        foundation.bookmarkDataWithOptions(url, NSURLBookmarkCreationWithSecurityScope);
    if (bookmark.error) {
        return;
    }
    NSUserDefaults& defaults = foundation.standardUserDefaults();
    defaults.setObject(bookmark.data, "iData");
    defaults.synchronize();
}

} // namespace

std::optional<std::string> chosenFolder(const NSButton& outfolderB) {
    std::string title = outfolderB.title();
    if (title == noFolderTitle) {
        return std::nullopt;
    }
    return title;
}

void AppDelegate::outputFolder(NSObject*) {
    // Cancelling or rejecting a choice clears the current folder but not the saved one: the next
    // launch restores the last confirmed folder. That is on purpose.
    const auto clearFolder = [this] {
        outfolderB->setTitle(noFolderTitle);
        gotFolder = noFolderTitle;
    };

    const auto panel = folderPanel(platform_.appKit);
    if (panel->runModal() != NSModalResponseOK) {
        clearFolder();
        outfolderB->setState(NSControlStateValueOn);
        return;
    }

    const std::optional<NSURL> url = panel->URL();
    const std::optional<std::string> path =
        url ? std::optional<std::string>(url->path()) : std::nullopt;
    if (!isWorkingFolder(path)) {
        runStandardAlert(platform_.appKit, "Not a valid working folder",
                         "You canceled saving folder selection or the folder you selected is NOT "
                         "recommended as a working folder. Please make sure it is not located on "
                         "any removable volume and make selection again.\n");
        clearFolder();
        outfolderB->setState(NSControlStateValueOn);
        return;
    }

    if (!confirmFolder(platform_.appKit, *path)) {
        outfolderB->setTitle(noFolderTitle);
        outfolderB->setState(NSControlStateValueOn);
        gotFolder = noFolderTitle;
        return;
    }

    outfolderB->setTitle(*path);
    gotFolder = *path;
    rememberFolder(platform_.foundation, *url);
    outfolderB->setState(NSControlStateValueOn);
}

void AppDelegate::checkUserFolder(NSObject*) {
    bookmarkFileURL.reset();
    const auto bookmark = platform_.foundation.standardUserDefaults().objectForKey("iData");
    if (bookmark) {
        const BookmarkURLResult resolved = platform_.foundation.URLByResolvingBookmarkData(
            *bookmark, NSURLBookmarkResolutionWithSecurityScope);
        bookmarkFileURL = resolved.url;
        if (resolved.error) {
            bookmarkFileURL.reset();
        }
    }

    if (!bookmarkFileURL) {
        outfolderB->setTitle(noFolderTitle);
        outfolderB->setState(NSControlStateValueOn);
        return;
    }

    platform_.foundation.startAccessingSecurityScopedResource(*bookmarkFileURL);
    outfolderB->setTitle(bookmarkFileURL->path());
    // `isDirectory` keeps its initial value if the path does not exist: a folder that has vanished
    // is cleared, so that no frame is lost silently. Any existing path is accepted, even a file.
    bool isDirectory = true;
    const bool exists =
        platform_.foundation.defaultManager().fileExistsAtPath(outfolderB->title(), isDirectory);
    if (!exists && isDirectory) {
        outfolderB->setTitle(noFolderTitle);
        outfolderB->setState(NSControlStateValueOn);
    }
}

} // namespace vistrane
