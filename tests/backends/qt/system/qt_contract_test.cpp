#include "tests/backends/qt/system/QtSystemBackend.h"
#include "tests/contract/AlertContract.h"
#include "tests/contract/TimerContract.h"
#include "tests/contract/UserDefaultsContract.h"

namespace vistrane {

INSTANTIATE_TYPED_TEST_SUITE_P(Qt, AlertContract, QtSystemBackend, contract::Names);
INSTANTIATE_TYPED_TEST_SUITE_P(Qt, TimerContract, QtSystemBackend, contract::Names);
INSTANTIATE_TYPED_TEST_SUITE_P(Qt, UserDefaultsContract, QtSystemBackend, contract::Names);

} // namespace vistrane
