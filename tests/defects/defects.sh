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

# The backends, and what they share

defect TimerGridMovesWithALateTick platform/TimerGrid.h 'sim_test console_tests qt_system_tests' \
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
    'while (::fsync(descriptor) != 0) {' \
    'while (descriptor < 0) {'

defect FailedIndexWriteIsIgnored backends/movies movies_test \
    'if (auto error = file_->write(index.data(), index.size())) { return error; }' \
    'static_cast<void>(file_->write(index.data(), index.size()));'

defect AnotherCameraOfTheSameKindIsTaken backends/cameras cameras_test \
    'candidates.size() == 1 ?' \
    '!candidates.empty() ?'
