#include "tests/backends/qt/controls/ControlWidgets.h"
#include "tests/contract/ControlContract.h"
#include "tests/contract/ProgressContract.h"

namespace vistrane {

INSTANTIATE_TYPED_TEST_SUITE_P(Qt, ControlContract, ControlWidgets, contract::Names);
INSTANTIATE_TYPED_TEST_SUITE_P(Qt, ProgressContract, ControlWidgets, contract::Names);

} // namespace vistrane
