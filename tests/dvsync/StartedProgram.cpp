// Tells, in a file beside it, by what name and with how many arguments it was started. For Windows.

#include <filesystem>
#include <fstream>

int wmain(int argumentCount, wchar_t** arguments) {
    const std::filesystem::path program(arguments[0]);
    const std::filesystem::path unfinished = program.parent_path() / "unfinished";
    std::ofstream(unfinished) << program.generic_u8string() << '|' << argumentCount - 1;
    std::filesystem::rename(unfinished, program.parent_path() / "started");
    return 0;
}
