#include "shared/command_line.h"
#include "shared/start_up.h"

int main(int argc, char** argv) {
    vorl::tool::prepareProcess();
    return static_cast<int>(vorl::tool::runCommandLine(argc, argv));
}
