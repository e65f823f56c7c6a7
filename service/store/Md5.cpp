#include "service/store/Md5.h"

#include <openssl/evp.h>

#include <array>
#include <stdexcept>
#include <string_view>

namespace service::store {

void Md5::Deleter::operator()(evp_md_ctx_st* context) const {
    EVP_MD_CTX_free(context);
}

Md5::Md5() : _context(EVP_MD_CTX_new()) {
    if (_context == nullptr || EVP_DigestInit_ex(_context.get(), EVP_md5(), nullptr) != 1) {
        throw std::runtime_error("The system's cryptography library offers no MD5");
    }
}

Md5::~Md5() = default;

void Md5::Add(const char* data, std::size_t size) {
    EVP_DigestUpdate(_context.get(), data, size);
}

std::string Md5::Finish() {
    constexpr std::string_view digits = "0123456789abcdef";
    std::array<unsigned char, EVP_MAX_MD_SIZE> sum{};
    unsigned length = 0;
    EVP_DigestFinal_ex(_context.get(), sum.data(), &length);
    std::string text;
    for (unsigned i = 0; i < length; ++i) {
        text += digits[sum[i] >> 4U];
        text += digits[sum[i] & 0x0FU];
    }
    return text;
}

}  // namespace service::store
