#include "backends/movies/movie_errors.h"

#include <cerrno>
#include <system_error>

#include "platform/shown_text.h"

namespace vistrane {

namespace {

const char* adviceFor(int number) {
    switch (number) {
    case ENOSPC:
    case EDQUOT:
        return "Free some space on that disk";
    case EFBIG:
        return "The file has reached the size limit: raise the limit, or use "
               "another disk";
    case EACCES:
    case EPERM:
    case EROFS:
        return "Choose a folder that you may write to";
    case ENOENT:
    case ENOTDIR:
        return "Check that the folder is there, or choose another one";
    case ENAMETOOLONG:
        return "Choose a folder with a shorter path";
    case EMFILE:
    case ENFILE:
        return "Too many files are open: close some programs";
    default:
        return "Check that disk";
    }
}

} // namespace

NSError cancelledError(const std::string& path) {
    return movieError(AVErrorOperationCancelled,
                      "The movie was cancelled before it was complete (" + shownText(path) +
                          "). Compile again");
}

NSError memoryError(const std::string& what) {
    return movieError(AVErrorUnknown, "There is not enough memory for " + what +
                                          ". Use smaller frames, or close some programs");
}

NSError systemError(int number, const std::string& what, const std::string& path) {
    return {"NSPOSIXErrorDomain", number,
            what + " (" + shownText(path) + "): " + std::generic_category().message(number) + ". " +
                adviceFor(number)};
}

} // namespace vistrane
