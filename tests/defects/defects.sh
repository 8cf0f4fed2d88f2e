# shellcheck shell=bash disable=SC2016
# The defects that tests/defects/run seeds, one at a time.
#
#   defect NAME PLACE PROGRAMS BEFORE AFTER [BEFORE AFTER]...
#
# NAME      describes the program with the defect.
# PLACE     is a file, or a folder to search.
# PROGRAMS  are the test programs to try first, in one argument.
# BEFORE    is text of the place and becomes AFTER. White space in it matches any white space, and
#           none after an opening parenthesis. It must occur exactly once in PLACE.
#
# Each defect must change the program's behaviour and compile without warnings.

# The core

defect MinutesReach999 core/capture/schedule.cpp capture_test \
    'clampField(*mInput, highestSixtieths);' \
    'clampField(*mInput, highestHours);'

defect StillIsNamedByTheCalendarYear core/capture/stills.cpp capture_test \
    'setDateFormat("YY-MM-dd-HH-mm-ss")' \
    'setDateFormat("yy-MM-dd-HH-mm-ss")'

defect ConnectionIsReadAfterTheNewInput core/capture/devices.cpp capture_test \
    'con = stillPhotoOutput ? stillPhotoOutput->connectionWithMediaType(AVMediaTypeVideo) : nullptr;' \
    '' \
    'aSession->addInput(result.input);' \
    'aSession->addInput(result.input);
     con = stillPhotoOutput ? stillPhotoOutput->connectionWithMediaType(AVMediaTypeVideo) : nullptr;'

defect FramesComeOnePeriodEarly core/compiler/frame_time.h compiler_test \
    'CMTimeAdd(CMTimeMake(index, rate), CMTimeMake(1, rate))' \
    'CMTimeMake(index, rate)'

defect CompileReadsTheFrameListOnce core/compiler/movie_writer.cpp compiler_test \
    'while (hasFrame(pictureArray, i)) {' \
    'const auto first = pictureArray.load();
     while (first && static_cast<std::size_t>(i) < first->size() && hasFrame(pictureArray, 0)) {'

defect CompileFollowsTheRateSlider core/compiler/movie_writer.cpp compiler_test \
    'framePresentationTime(i, compileFrameRate())' \
    'framePresentationTime(i, fpsS->intValue())'

defect PictureSizeIsRounded core/compiler/pixel_buffer.cpp compiler_test \
    'static_cast<std::uint64_t>(side) : UINT64_MAX' \
    'static_cast<std::uint64_t>(side + 0.5) : UINT64_MAX'

defect EqualNamesAreTied core/folder/frame_list.cpp folder_test \
    '| NSWidthInsensitiveSearch | NSForcedOrderingSearch;' \
    '| NSWidthInsensitiveSearch;'

defect ChosenFolderIsNotSynchronized core/folder/project_folder.cpp folder_test \
    'defaults.synchronize();' \
    ''

defect VanishedFolderIsKept core/folder/project_folder.cpp folder_test \
    'bool isDirectory = true;' \
    'bool isDirectory = false;'

# Failures in the core

defect RefusedBookmarkIsStored core/folder/project_folder.cpp folder_test \
    'if (bookmark.error) { return; }' \
    ''

defect UnlistedFolderEmptiesTheFrames core/folder/frame_list.cpp folder_test \
    'if (!names) { return; }' \
    'if (!names) { names.emplace(); }'

defect FailedStillIsSaved core/capture/stills.cpp capture_test \
    '{error->localizedDescription}));
        return;' \
    '{error->localizedDescription}));'

defect ButtonStaysOffWithoutAMovie core/compiler/movie_writer.cpp compiler_test \
    'error.localizedDescription);
     compilingB->setEnabled(true);' \
    'error.localizedDescription);'

defect FrameWithoutRoomIsSkipped core/compiler/movie_writer.cpp compiler_test \
    'frameAt(pictureArray, i).value_or("(null)")}));' \
    'frameAt(pictureArray, i).value_or("(null)")}));
     ++i;'

# The backends, and what they share

defect TimerGridMovesWithALateTick platform/TimerGrid.h 'timer_schedule_test sim_test' \
    'void passUpTo(std::int64_t now) {' \
    'void passUpTo(std::int64_t now) {
         start_ = now;
         number_ = 0;'

defect ListingLeaksADescriptor backends/posix posix_tests \
    'entryNames(folder.number())' \
    'entryNames(::dup(folder.number()))'

defect PngChecksumsAreNotVerified backends/pictures/png_header.cpp pictures_test \
    '== checksum;' \
    '== checksum || !typeAndData.empty();'

defect BrokenStillStaysBehind backends pictures_test \
    'removeOpened(path, state);' \
    'if (path.empty()) { removeOpened(path, state); }'

defect MovieHasTheOldColourMatrix backends/movies/color_weights.h 'movie_parts_test movies_test' \
    'redShare = 0.2126;' 'redShare = 0.299;' \
    'greenShare = 0.7152;' 'greenShare = 0.587;' \
    'blueShare = 0.0722;' 'blueShare = 0.114;'

defect MovieBeingWrittenIsNotLocked backends/movies movies_test \
    'LOCK_EX | LOCK_NB) != 0 && errno' \
    'LOCK_UN) != 0 && errno'

defect FinishedMovieReplacesAFile backends/movies movies_test \
    'to.c_str(), RENAME_NOREPLACE)' \
    'to.c_str(), 0)'

defect NothingIsFlushedToTheDisk backends/posix 'posix_tests movies_test' \
    'return ::fsync(descriptor);' \
    'return descriptor < 0 ? -1 : 0;'

defect FailedIndexWriteIsIgnored backends/movies movies_test \
    'if (auto error = file_->write(index.data(), index.size())) { return error; }' \
    'static_cast<void>(file_->write(index.data(), index.size()));'

defect AnotherCameraOfTheSameKindIsTaken backends/cameras cameras_test \
    'candidates.size() == 1 ?' \
    '!candidates.empty() ?'

# Failures in the backends

defect ShortWriteCountsAsWhole backends/posix/Descriptor.cpp posix_tests \
    'count -= static_cast<std::size_t>(written);' \
    'count = 0;'

defect WriteErrorIsForgotten backends/posix/BackgroundWriter.cpp posix_tests \
    'error = error == 0 ? result : error;' \
    'error = 0;'

defect ListingErrorCountsAsTheEnd backends/posix posix_tests \
    'if (size == 0 || (size < 0 && errno == ENOENT)) {' \
    'if (size <= 0) {'

defect UnsavedSettingsCountAsSaved backends/qt/system qt_system_tests \
    'if (error == 0) { changes_.clear(); }' \
    'changes_.clear();'

defect DamagedSettingsAreLost backends/qt/system qt_system_tests \
    'std::rename(path_.c_str(), aside.c_str()) == 0;' \
    'std::remove(path_.c_str()) == 0;'

defect CreationErrorHasAnotherNumber backends/pictures pictures_test \
    'systemError(errno, "Cannot create the file", path, writeAdvice);' \
    'systemError(EIO, "Cannot create the file", path, writeAdvice);'

defect FreshFileIsHeld backends/pictures/Pictures.cpp shared_pictures_test \
    '!file->state().isSettled() || !room.take' \
    '!room.take'

defect OldHintIsWorkedOff backends/pictures/PicturesAhead.cpp shared_pictures_test \
    'if (isHeld(each->first)) {' \
    'if (isHeld(each->first) || paths) {'

defect DamagedFrameCountsAsWhole backends/pictures pictures_test \
    'return damaged(name(), *fault);' \
    'return std::nullopt;'

defect LeftoverIsNotRemoved backends/movies movies_test \
    '::unlinkat(folder, name.c_str(), 0);' \
    ''

defect WholeLeftoverIsRemoved backends/movies movies_test \
    'if (isComplete(file.number())) {' \
    'if (isComplete(-1)) {'

defect UnflushedMovieIsPublished backends/movies movies_test \
    'number != 0 ? unsyncedError(number) : rename();' \
    'rename();'

defect AbandonedMovieStaysBehind backends/movies movies_test \
    'isOurs = !isStarted_ && !isFinishing_;
     }
     file_->discard();' \
    'isOurs = !isStarted_ && !isFinishing_;
     }'

defect FailedEncodingIsIgnored backends/movies movies_test \
    'if (auto error = encode(*item)) { fail(std::move(*error)); }' \
    'static_cast<void>(encode(*item));'

defect CameraWatchdogNeverBarks backends/cameras cameras_test \
    'phase == Phase::live && now >= lastPicture + forCamera(options.silence)) {' \
    'phase == Phase::live && now < lastPicture) {'

defect LostCameraForgetsItsStills backends/cameras cameras_test \
    'failRequests(error);' \
    'requests.clear();'

# Failures on the command line

defect LostFrameIsASuccess frontends/commandline program_test \
    'return failures == 0;' \
    'return failures >= 0;'
