#pragma once

#include <string>

namespace service::test {

/// Keeps what programs write to a descriptor, in memory and without limit.
class CapturedText {
public:
    CapturedText();
    ~CapturedText();
    CapturedText(const CapturedText&) = delete;
    CapturedText& operator=(const CapturedText&) = delete;

    int Descriptor() const { return _descriptor; }
    /// What was written so far.
    std::string Text() const;

private:
    int _descriptor;
};

}  // namespace service::test
