#include "client/cli/CommandLine.h"

int main(int argc, char** argv) {
    return ovsync::cli::RunCommandLine(argc, argv);
}
