#include "tests/frontends/interface/DesktopStyle.h"

#include <QtPlugin>

using vistrane::DesktopStylePlugin;
Q_IMPORT_PLUGIN(DesktopStylePlugin)
