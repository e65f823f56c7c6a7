#pragma once

#include <memory>
#include <string>

struct evp_md_ctx_st;

namespace service::store {

/// Computes the MD5 of bytes that come in pieces. Throws std::runtime_error where the system offers no MD5.
class Md5 {
public:
    Md5();
    ~Md5();
    Md5(Md5&&) noexcept = default;
    Md5& operator=(Md5&&) noexcept = default;
    Md5(const Md5&) = delete;
    Md5& operator=(const Md5&) = delete;

    void Add(const char* data, std::size_t size);

    /// The sum of all bytes added, as 32 lower-case hexadecimal digits. To be called once, last.
    std::string Finish();

private:
    struct Deleter {
        void operator()(evp_md_ctx_st* context) const;
    };

    std::unique_ptr<evp_md_ctx_st, Deleter> _context;
};

}  // namespace service::store
