#include "net/SocksWire.h"

#include "net/SocketIo.h"

#include <algorithm>
#include <cstring>
#include <initializer_list>

namespace selvane {

namespace socks {

namespace {

// A two-byte reply (version, code) whose version is one of `versions`.
Reply parseTwoByteReply(const std::uint8_t *data, std::size_t size,
                        std::initializer_list<std::uint8_t> versions, const char *problem)
{
    Reply r;
    if (size < 1)
        return r;
    if (std::find(versions.begin(), versions.end(), data[0]) == versions.end()) {
        r.parse = Parse::Invalid;
        r.problem = problem;
        return r;
    }
    if (size < 2)
        return r;
    r.code = data[1];
    r.length = 2;
    r.parse = Parse::Complete;
    return r;
}

} // namespace

Reply parseMethodReply(const std::uint8_t *data, std::size_t size)
{
    return parseTwoByteReply(data, size, {0x05},
                             "not a SOCKS5 proxy (wrong version in the greeting reply)");
}

Reply parseAuthReply(const std::uint8_t *data, std::size_t size)
{
    // Some proxies answer the sub-negotiation with version 5 instead of 1.
    return parseTwoByteReply(data, size, {0x01, 0x05}, "wrong version in the authentication reply");
}

Reply parseConnectReply(const std::uint8_t *data, std::size_t size)
{
    Reply r;
    if (size < 1)
        return r;
    if (data[0] != 0x05) {
        r.parse = Parse::Invalid;
        r.problem = "wrong version in the CONNECT reply";
        return r;
    }
    if (size < 2)
        return r;
    r.code = data[1];
    if (size < 4)
        return r;
    switch (data[3]) {
    case 0x01:
        r.length = 4 + 4 + 2;
        break;
    case 0x04:
        r.length = 4 + 16 + 2;
        break;
    case 0x03:
        if (size < 5)
            return r;
        if (data[4] == 0) {
            r.parse = Parse::Invalid;
            r.problem = "empty bound name in the CONNECT reply";
            return r;
        }
        r.length = 5 + std::size_t(data[4]) + 2;
        break;
    default:
        r.parse = Parse::Invalid;
        r.problem = "unknown address type in the CONNECT reply";
        return r;
    }
    if (size >= r.length)
        r.parse = Parse::Complete;
    return r;
}

std::vector<std::uint8_t> greeting(bool offerUserPassword)
{
    if (offerUserPassword)
        return {0x05, 0x02, kMethodNone, kMethodUserPassword};
    return {0x05, 0x01, kMethodNone};
}

std::vector<std::uint8_t> authRequest(const std::string &user, const std::string &password)
{
    if (user.empty() || password.empty() || user.size() > 255 || password.size() > 255)
        return {};
    std::vector<std::uint8_t> out{0x01, std::uint8_t(user.size())};
    out.insert(out.end(), user.begin(), user.end());
    out.push_back(std::uint8_t(password.size()));
    out.insert(out.end(), password.begin(), password.end());
    return out;
}

std::vector<std::uint8_t> connectRequest(const std::string &host, std::uint16_t port)
{
    std::vector<std::uint8_t> out{0x05, 0x01, 0x00};
    in_addr v4{};
    in6_addr v6{};
    if (inet_pton(AF_INET, host.c_str(), &v4) == 1) {
        out.push_back(0x01);
        const auto *bytes = reinterpret_cast<const std::uint8_t *>(&v4);
        out.insert(out.end(), bytes, bytes + 4);
    } else if (inet_pton(AF_INET6, host.c_str(), &v6) == 1) {
        out.push_back(0x04);
        const auto *bytes = reinterpret_cast<const std::uint8_t *>(&v6);
        out.insert(out.end(), bytes, bytes + 16);
    } else {
        if (host.empty() || host.size() > 255)
            return {};
        out.push_back(0x03);
        out.push_back(std::uint8_t(host.size()));
        for (const char c : host)
            out.push_back(std::uint8_t(c));
    }
    out.push_back(std::uint8_t(port >> 8));
    out.push_back(std::uint8_t(port & 0xff));
    return out;
}

std::string replyCodeText(int code)
{
    switch (code) {
    case 0:
        return "succeeded";
    case 1:
        return "general failure";
    case 2:
        return "not allowed by the proxy's rules";
    case 3:
        return "network unreachable";
    case 4:
        return "host unreachable";
    case 5:
        return "connection refused";
    case 6:
        return "TTL expired";
    case 7:
        return "command not supported";
    case 8:
        return "address type not supported";
    default:
        return "unknown reply code";
    }
}

} // namespace socks

} // namespace selvane
