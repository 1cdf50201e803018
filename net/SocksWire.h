#pragma once

// The SOCKS5 wire format (RFC 1928, and RFC 1929 for user and password): requests built, replies
// read by pure functions that take the bytes received so far.
//
// Pure functions; any thread. Plain C++, no Qt.

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace selvane {

namespace socks {

enum class Parse
{
    Complete, // `length` bytes form the reply
    NeedMore, // a valid beginning; more bytes are needed
    Invalid,  // not a reply of this kind (`problem` says why)
};

struct Reply
{
    Parse parse = Parse::NeedMore;
    // The method chosen (greeting), the status (authentication) or the reply code (CONNECT);
    // -1 until its byte has arrived.
    int code = -1;
    std::size_t length = 0; // bytes the reply takes (valid when Complete)
    const char *problem = "";
};

constexpr int kMethodNone = 0x00;
constexpr int kMethodUserPassword = 0x02;
constexpr int kMethodNoneAcceptable = 0xff;

// The reply to the greeting: version 5 and the method the proxy chose.
Reply parseMethodReply(const std::uint8_t *data, std::size_t size);
// The reply to the user/password request: version 1 and a status, 0 for success.
Reply parseAuthReply(const std::uint8_t *data, std::size_t size);
// The reply to CONNECT: version 5, the reply code (0 succeeded), a reserved byte, the bound
// address (IPv4, domain name or IPv6) and port.
Reply parseConnectReply(const std::uint8_t *data, std::size_t size);

std::vector<std::uint8_t> greeting(bool offerUserPassword);
// Empty when the user or the password is empty or longer than 255 bytes.
std::vector<std::uint8_t> authRequest(const std::string &user, const std::string &password);
// CONNECT by address for IPv4 and IPv6 literals, by name otherwise; empty when a name is empty or
// longer than 255 bytes.
std::vector<std::uint8_t> connectRequest(const std::string &host, std::uint16_t port);

// The reply code in words ("connection refused" ...).
std::string replyCodeText(int code);

} // namespace socks

} // namespace selvane
