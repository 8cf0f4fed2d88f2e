#include "tests/backends/console/ConsoleBackend.h"
#include "tests/contract/AlertContract.h"
#include "tests/contract/ControlContract.h"
#include "tests/contract/NibContract.h"
#include "tests/contract/ProgressContract.h"
#include "tests/contract/UserDefaultsContract.h"

namespace vistrane {

INSTANTIATE_TYPED_TEST_SUITE_P(Console, AlertContract, ConsoleBackend, contract::Names);
INSTANTIATE_TYPED_TEST_SUITE_P(Console, ControlContract, ConsoleBackend, contract::Names);
INSTANTIATE_TYPED_TEST_SUITE_P(Console, NibContract, ConsoleBackend, contract::Names);
INSTANTIATE_TYPED_TEST_SUITE_P(Console, ProgressContract, ConsoleBackend, contract::Names);
INSTANTIATE_TYPED_TEST_SUITE_P(Console, UserDefaultsContract, ConsoleBackend, contract::Names);

} // namespace vistrane
