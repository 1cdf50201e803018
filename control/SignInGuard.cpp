#include "control/SignInGuard.h"

#include <QRandomGenerator>
#include <chrono>
#include <utility>

namespace selvane::control {

namespace {

MillisecondClock steadyClock(MillisecondClock given)
{
    if (given)
        return given;
    return [] {
        return std::chrono::duration_cast<std::chrono::milliseconds>(
                   std::chrono::steady_clock::now().time_since_epoch())
            .count();
    };
}

} // namespace

SignInGuard::SignInGuard(MillisecondClock now) : m_now(steadyClock(std::move(now))) {}

qint64 SignInGuard::lockedForMs(const QHostAddress &address)
{
    const auto found = m_records.constFind(address);
    if (found == m_records.cend() || found->failures < kMaxFailures)
        return 0;
    const qint64 left = found->lastMs + kWindowMs - m_now();
    return left > 0 ? left : 0;
}

bool SignInGuard::failed(const QHostAddress &address)
{
    const qint64 now = m_now();
    forgetOld(now);
    Record &record = m_records[address];
    // A window that has run out without a lock starts again.
    if (record.failures > 0 && record.failures < kMaxFailures && now - record.firstMs > kWindowMs)
        record.failures = 0;
    // A lock that has run out starts a fresh window too.
    if (record.failures >= kMaxFailures && now - record.lastMs >= kWindowMs)
        record.failures = 0;
    if (record.failures == 0)
        record.firstMs = now;
    ++record.failures;
    record.lastMs = now;
    return record.failures == kMaxFailures;
}

int SignInGuard::lockedCount()
{
    int locked = 0;
    for (auto it = m_records.cbegin(); it != m_records.cend(); ++it)
        if (lockedForMs(it.key()) > 0)
            ++locked;
    return locked;
}

void SignInGuard::forgetOld(qint64 nowMs)
{
    for (auto it = m_records.begin(); it != m_records.end();)
        it = nowMs - it->lastMs > kForgetMs ? m_records.erase(it) : std::next(it);
    while (m_records.size() >= kMaxAddresses) {
        auto oldest = m_records.begin();
        for (auto it = m_records.begin(); it != m_records.end(); ++it)
            if (it->lastMs < oldest->lastMs)
                oldest = it;
        m_records.erase(oldest);
    }
}

EventTickets::EventTickets(MillisecondClock now) : m_now(steadyClock(std::move(now))) {}

QByteArray EventTickets::issue()
{
    const qint64 now = m_now();
    for (auto it = m_expiry.begin(); it != m_expiry.end();)
        it = it.value() <= now ? m_expiry.erase(it) : std::next(it);
    while (m_expiry.size() >= kMaxOutstanding) {
        auto oldest = m_expiry.begin();
        for (auto it = m_expiry.begin(); it != m_expiry.end(); ++it)
            if (it.value() < oldest.value())
                oldest = it;
        m_expiry.erase(oldest);
    }
    quint32 words[4];
    QRandomGenerator::system()->fillRange(words);
    const QByteArray ticket =
        QByteArray(reinterpret_cast<const char *>(words), sizeof words).toHex();
    m_expiry.insert(ticket, now + kLifetimeMs);
    return ticket;
}

bool EventTickets::redeem(QByteArrayView ticket)
{
    if (ticket.isEmpty())
        return false;
    const auto found = m_expiry.constFind(ticket.toByteArray());
    if (found == m_expiry.cend())
        return false;
    const bool fresh = found.value() > m_now();
    m_expiry.erase(found);
    return fresh;
}

QByteArray offeredTicket(QByteArrayView protocolHeader)
{
    static constexpr QByteArrayView prefix("ticket.");
    for (const QByteArrayView part : protocolHeader.toByteArray().split(',')) {
        QByteArrayView offered = part.trimmed();
        if (offered.startsWith(prefix))
            return offered.sliced(prefix.size()).toByteArray();
    }
    return {};
}

} // namespace selvane::control
