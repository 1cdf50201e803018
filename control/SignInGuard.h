#pragma once

// Who may try a token, and the tickets that open the event stream to a browser.
//
// SignInGuard counts the wrong tokens each address presents: five within a minute and that
// address is refused outright (429, right token or not) until a minute has passed since its
// last wrong one, so a token cannot be guessed at the speed of the network. Addresses are kept
// for at most ten minutes after their last failure, and at most 4096 of them (the oldest goes).
//
// EventTickets hands an authorised client a ticket for /api/v1/events: a browser cannot put an
// Authorization header on a WebSocket, so the page asks for a ticket with its token and offers
// it as the subprotocol "ticket.HEX". A ticket is random (128 bits), good once, for 30 seconds;
// at most 64 are outstanding (the oldest goes). Neither class logs a token or a ticket.
//
// Plain objects of the control server's thread (the GUI thread). The clock may be given (tests).

#include <QByteArray>
#include <QHash>
#include <QHostAddress>
#include <functional>

namespace selvane::control {

using MillisecondClock = std::function<qint64()>;

class SignInGuard
{
public:
    static constexpr int kMaxFailures = 5;
    static constexpr qint64 kWindowMs = 60000;
    static constexpr qint64 kForgetMs = 600000;
    static constexpr int kMaxAddresses = 4096;

    explicit SignInGuard(MillisecondClock now = {});

    // Milliseconds until `address` may try again; 0 when it may now.
    qint64 lockedForMs(const QHostAddress &address);
    // `address` presented a wrong token (or ticket); true when that locked it out.
    bool failed(const QHostAddress &address);
    // How many addresses are refused now (for the log).
    int lockedCount();

private:
    struct Record
    {
        int failures = 0;
        qint64 firstMs = 0; // the first failure of the current window
        qint64 lastMs = 0;
    };
    void forgetOld(qint64 nowMs);

    MillisecondClock m_now;
    QHash<QHostAddress, Record> m_records;
};

class EventTickets
{
public:
    static constexpr qint64 kLifetimeMs = 30000;
    static constexpr int kMaxOutstanding = 64;

    explicit EventTickets(MillisecondClock now = {});

    // A new ticket (32 hexadecimal digits).
    QByteArray issue();
    // True once for a ticket that was issued and has not expired; it is spent either way.
    bool redeem(QByteArrayView ticket);

private:
    MillisecondClock m_now;
    QHash<QByteArray, qint64> m_expiry; // ticket -> when it expires
};

// The ticket a WebSocket handshake offers in Sec-WebSocket-Protocol ("…, ticket.HEX"); empty
// when none.
QByteArray offeredTicket(QByteArrayView protocolHeader);

} // namespace selvane::control
