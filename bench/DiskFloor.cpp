// Usage: disk-floor [--files N] [--size BYTES] [--folders T] [--flush each|once|never] DIR
// Writes N files of that size into T folders of DIR, under other names first, and renames them: what a disk asks for
// files that come from nowhere. They are flushed one by one, or all at once before any of them is renamed, or not at
// all. Where they are, the names in each folder are flushed, too.

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace {

enum class Flush { Each, Once, Never };

struct Task {
    int files = 5000;
    std::size_t size = 4096;
    int folders = 50;
    Flush flush = Flush::Each;
    std::string directory;
};

void Check(bool isDone, const std::string& what) {
    if (!isDone) {
        throw std::runtime_error(what + ": " + std::strerror(errno));
    }
}

Flush FlushFrom(const std::string& word) {
    if (word == "each") {
        return Flush::Each;
    }
    if (word == "once") {
        return Flush::Once;
    }
    if (word == "never") {
        return Flush::Never;
    }
    throw std::invalid_argument("--flush is each, once or never");
}

Task TaskFrom(const std::vector<std::string>& arguments) {
    Task task;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string& name = arguments[i];
        if (name.rfind("--", 0) != 0) {
            task.directory = name;
            continue;
        }
        const std::string& value = arguments.at(++i);
        if (name == "--files") {
            task.files = std::stoi(value);
        } else if (name == "--size") {
            task.size = std::stoul(value);
        } else if (name == "--folders") {
            task.folders = std::stoi(value);
        } else if (name == "--flush") {
            task.flush = FlushFrom(value);
        } else {
            throw std::invalid_argument("there is no option " + name);
        }
    }
    if (task.directory.empty() || task.folders < 1) {
        throw std::invalid_argument("which folder, and how many in it?");
    }
    return task;
}

class Folder {
public:
    Folder(int above, const std::string& name) {
        Check(mkdirat(above, name.c_str(), 0777) == 0, name);
        _descriptor = openat(above, name.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        Check(_descriptor >= 0, name);
    }
    ~Folder() { close(_descriptor); }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;
    Folder(Folder&& other) noexcept : _descriptor(std::exchange(other._descriptor, -1)) {}
    Folder& operator=(Folder&&) = delete;

    void Write(const std::string& name, const std::vector<char>& content, bool isFlushed) const {
        const int file = openat(_descriptor, name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        Check(file >= 0, name);
        Check(write(file, content.data(), content.size()) == static_cast<ssize_t>(content.size()), name);
        Check(!isFlushed || fsync(file) == 0, name);
        close(file);
    }

    void Rename(const std::string& from, const std::string& to) const {
        Check(renameat(_descriptor, from.c_str(), _descriptor, to.c_str()) == 0, from);
    }

    void Flush() const { Check(fsync(_descriptor) == 0, "a folder"); }

private:
    int _descriptor = -1;
};

void Run(const Task& task) {
    const int above = open(task.directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    Check(above >= 0, task.directory);
    std::vector<Folder> folders;
    folders.reserve(static_cast<std::size_t>(task.folders));
    for (int i = 0; i < task.folders; ++i) {
        folders.emplace_back(above, std::to_string(i));
    }
    const std::vector<char> content(task.size, 'x');
    const auto folderOf = [&](int file) -> const Folder& {
        return folders[static_cast<std::size_t>(file) * folders.size() / static_cast<std::size_t>(task.files)];
    };
    for (int file = 0; file < task.files; ++file) {
        folderOf(file).Write("." + std::to_string(file), content, task.flush == Flush::Each);
    }
    if (task.flush == Flush::Once) {
        Check(syncfs(above) == 0, task.directory);
    }
    for (int file = 0; file < task.files; ++file) {
        folderOf(file).Rename("." + std::to_string(file), std::to_string(file));
    }
    for (const Folder& folder : folders) {
        if (task.flush != Flush::Never) {
            folder.Flush();
        }
    }
    close(above);
}

}  // namespace

int main(int count, char** arguments) {
    try {
        Run(TaskFrom(std::vector<std::string>(arguments + 1, arguments + count)));
        return 0;
    } catch (const std::exception& e) {
        std::fprintf(stderr, "disk-floor: %s\n", e.what());
        return 1;
    }
}
