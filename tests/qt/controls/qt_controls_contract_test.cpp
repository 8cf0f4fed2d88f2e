#include "tests/contract/ControlContract.h"
#include "tests/qt/controls/ControlWidgets.h"

namespace vistrane {

INSTANTIATE_TYPED_TEST_SUITE_P(Qt, ControlContract, ControlWidgets, contract::Names);

} // namespace vistrane
