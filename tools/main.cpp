#include "platform/NConsole.h"
#include "tools/NCommandLine.h"

int main(int argc, char** argv) { return NCommandLine().Run(NCommandLineArguments(argc, argv)); }
