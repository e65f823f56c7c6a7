#pragma once

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <cstdlib>
#include <stdexcept>
#include <string>

namespace tests {

/// A terminal that nobody sits at.
class Terminal {
public:
    Terminal() : _master(posix_openpt(O_RDWR | O_NOCTTY)) {
        if (_master < 0 || grantpt(_master) != 0 || unlockpt(_master) != 0) {
            throw std::runtime_error("there is no terminal to be had");
        }
        _user = open(ptsname(_master), O_RDWR | O_NOCTTY);
        fcntl(_master, F_SETFL, O_NONBLOCK);
    }
    ~Terminal() {
        close(_user);
        close(_master);
    }
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    /// What a program writes to.
    int Descriptor() const { return _user; }
    /// What was written to it and not read yet, with the terminal's "\r\n" for '\n'.
    std::string Shown() const {
        // It comes out a little later than it was written, and in pieces.
        const char mark = '\x1f';
        if (write(_user, &mark, 1) != 1) {
            throw std::runtime_error("the terminal takes nothing");
        }
        std::string shown;
        while (shown.empty() || shown.back() != mark) {
            pollfd readable{_master, POLLIN, 0};
            if (poll(&readable, 1, 10000) != 1) {
                throw std::runtime_error("the terminal shows nothing");
            }
            shown += Read(_master);
        }
        shown.pop_back();
        return shown;
    }

    static std::string Read(int descriptor) {
        char bytes[1024];
        const ssize_t size = read(descriptor, bytes, sizeof(bytes));
        return std::string(bytes, static_cast<size_t>(size > 0 ? size : 0));
    }

private:
    int _master;
    int _user = -1;
};

/// A pipe, which is no terminal.
class Pipe {
public:
    Pipe() {
        if (pipe2(_ends, O_NONBLOCK) != 0) {
            throw std::runtime_error("there is no pipe to be had");
        }
    }
    ~Pipe() {
        close(_ends[0]);
        close(_ends[1]);
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;

    int Descriptor() const { return _ends[1]; }
    /// What was written to it and not read yet, at most 1024 bytes.
    std::string Shown() const { return Terminal::Read(_ends[0]); }

private:
    int _ends[2] = {};
};

/// Puts `target` in the place of `descriptor` as long as this object lives.
class Redirection {
public:
    Redirection(int descriptor, int target) : _descriptor(descriptor), _saved(dup(descriptor)) {
        dup2(target, descriptor);
    }
    ~Redirection() {
        dup2(_saved, _descriptor);
        close(_saved);
    }
    Redirection(const Redirection&) = delete;
    Redirection& operator=(const Redirection&) = delete;

private:
    const int _descriptor;
    const int _saved;
};

}  // namespace tests
