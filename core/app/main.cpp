#include "platform/appkit/NSApplication.h"

int main(int argc, char** argv) {
    return vistrane::NSApplicationMain(argc, argv);
}
