#pragma once

#include <string>
#include <utility>

#include "service/protocol/IBody.h"

namespace service::dav {

/// A body that is held in memory.
class TextBody : public protocol::IBody {
public:
    explicit TextBody(std::string text) : _text(std::move(text)) {}

    std::optional<std::uint64_t> Size() const override { return _text.size(); }
    std::size_t Read(char* buffer, std::size_t size) override {
        const std::size_t count = _text.copy(buffer, size, _position);
        _position += count;
        return count;
    }

private:
    std::string _text;
    std::size_t _position = 0;
};

}  // namespace service::dav
