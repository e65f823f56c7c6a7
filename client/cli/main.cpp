#include "client/cli/CommandLine.h"

int main(int argc, char** argv) {
    return static_cast<int>(ovsync::cli::RunCommandLine(argc, argv));
}
