#include "service/TextBody.h"

namespace service {

std::size_t TextBody::Read(char* buffer, std::size_t size) {
    const std::size_t count = _text.copy(buffer, size, _position);
    _position += count;
    return count;
}

}  // namespace service
