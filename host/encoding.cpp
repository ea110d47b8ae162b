#include "host/encoding.h"

#include <iconv.h>

#include <cerrno>

namespace ny {
namespace {

// Runs iconv over the whole input. With lenient set, an invalid or unconvertible sequence
// becomes '?' and one input byte is skipped; otherwise the conversion fails.
bool Convert(const char* to, const char* from, const std::string& in, std::string* out,
             bool lenient) {
    iconv_t cd = iconv_open(to, from);
    if (cd == reinterpret_cast<iconv_t>(-1)) return false;
    out->clear();
    char* src = const_cast<char*>(in.data());
    size_t srcLeft = in.size();
    char chunk[1024];
    bool ok = true;
    while (srcLeft > 0) {
        char* dst = chunk;
        size_t dstLeft = sizeof(chunk);
        size_t rc = iconv(cd, &src, &srcLeft, &dst, &dstLeft);
        out->append(chunk, dst - chunk);
        if (rc != static_cast<size_t>(-1)) continue;
        if (errno == E2BIG) continue;
        if (!lenient) {
            ok = false;
            break;
        }
        out->push_back('?');
        ++src;
        --srcLeft;
    }
    iconv_close(cd);
    return ok;
}

}  // namespace

std::string GbkToUtf8(const std::string& gbk) {
    std::string out;
    Convert("UTF-8", "GBK", gbk, &out, true);
    return out;
}

std::string Utf8ToGbk(const std::string& utf8) {
    std::string out;
    Convert("GBK", "UTF-8", utf8, &out, true);
    return out;
}

bool TryUtf8ToGbk(const std::string& utf8, std::string* gbk) {
    return Convert("GBK", "UTF-8", utf8, gbk, false);
}

}  // namespace ny
