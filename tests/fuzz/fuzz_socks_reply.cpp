// libFuzzer target: the SOCKS5 replies a proxy may send (to the greeting, to the user/password
// request, to CONNECT) are read without a crash, a hang or undefined behaviour, and the reader
// agrees with itself: bytes read one at a time give the same verdict as all at once, a complete
// reply never claims more bytes than it has, and extra bytes after it change nothing.

#include "net/SocksTcpRelay.h"

#include <cstdint>
#include <cstdlib>
#include <vector>

namespace {

using selvane::socks::Parse;
using selvane::socks::Reply;

void check(Reply (*parse)(const std::uint8_t *, std::size_t), const std::uint8_t *data,
           std::size_t size)
{
    const Reply whole = parse(data, size);
    if (whole.parse == Parse::Complete && (whole.length > size || whole.length == 0))
        std::abort();
    // Growing one byte at a time: "need more" until the verdict, and then the same verdict.
    for (std::size_t n = 0; n <= size; ++n) {
        const Reply part = parse(data, n);
        if (part.parse != Parse::NeedMore) {
            if (part.parse != whole.parse || part.length != whole.length || part.code != whole.code)
                std::abort();
            if (part.parse == Parse::Complete && part.length != n)
                std::abort();
            break;
        }
        if (n == size && whole.parse != Parse::NeedMore)
            std::abort();
    }
    // Bytes after a complete reply belong to whatever follows it.
    if (whole.parse == Parse::Complete) {
        std::vector<std::uint8_t> longer(data, data + size);
        longer.insert(longer.end(), 300, 0xAB);
        const Reply more = parse(longer.data(), longer.size());
        if (more.parse != Parse::Complete || more.length != whole.length || more.code != whole.code)
            std::abort();
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    check(selvane::socks::parseMethodReply, data, size);
    check(selvane::socks::parseAuthReply, data, size);
    check(selvane::socks::parseConnectReply, data, size);
    // The requests built from the same bytes stay within the protocol's limits.
    const std::string text(reinterpret_cast<const char *>(data), size);
    const std::vector<std::uint8_t> request =
        selvane::socks::connectRequest(text, std::uint16_t(size));
    if (!request.empty() && (request.size() < 8 || request.size() > 262 || request[0] != 5))
        std::abort();
    const std::size_t half = size / 2;
    const std::vector<std::uint8_t> auth =
        selvane::socks::authRequest(text.substr(0, half), text.substr(half));
    if (!auth.empty() && auth.size() != size + 3)
        std::abort();
    return 0;
}
