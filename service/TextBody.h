#pragma once

#include <string>

#include "service/Body.h"

namespace service {

/// A body that is held in memory.
class TextBody : public Body {
public:
    explicit TextBody(std::string text) : _text(std::move(text)) {}

    std::optional<std::uint64_t> Size() const override { return _text.size(); }
    std::size_t Read(char* buffer, std::size_t size) override;

private:
    std::string _text;
    std::size_t _position = 0;
};

}  // namespace service
