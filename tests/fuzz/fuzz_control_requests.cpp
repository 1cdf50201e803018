// libFuzzer target: the remote control's request reading. An input is either the bytes a client
// sends ("GET /api/v1/status HTTP/1.1\r\n...") or, starting with '@', a method, a path and a body
// on three lines that are read with the right token. Nothing may crash, hang or hit undefined
// behaviour, every refusal is a 4xx with a message, and what is accepted can be used as it
// stands: channels 0 to 3, overlay ids in range, rectangles with a size, volumes 0 to 4, output
// sizes even, 30 or 60 fps.

#include "control/ControlRequests.h"

#include <QByteArray>
#include <cstdint>
#include <cstdlib>

namespace {

void require(bool condition)
{
    if (!condition)
        std::abort();
}

constexpr QByteArrayView kToken("fuzz-token-0123456789");

void checkRefusal(const selvane::control::Refusal &refusal)
{
    if (refusal.ok())
        return;
    require(refusal.status >= 400 && refusal.status < 500);
    require(!refusal.message.isEmpty());
    require(refusal.status != 405 || !refusal.allow.isEmpty());
}

void checkCommand(const selvane::control::ParsedRequest &parsed)
{
    using namespace selvane::control;
    checkRefusal(parsed.refusal);
    if (!parsed.refusal.ok())
        return;
    const ControlCommand &c = parsed.command;
    switch (c.command) {
    case Command::SetChannel:
        require(!c.address.isEmpty());
        [[fallthrough]];
    case Command::ClearChannel:
    case Command::PauseChannel:
    case Command::ResumeChannel:
    case Command::SeekChannel:
    case Command::Cut:
    case Command::ChannelAudio:
        require(c.channel >= 0 && c.channel < selvane::kChannelCount);
        require(c.positionMs >= 0);
        break;
    case Command::SetText:
        require(c.text.id == c.id && c.id >= 0 && c.id <= kMaxOverlayId);
        require(c.text.fontPointSize >= TextOverlayData::kMinPointSize &&
                c.text.fontPointSize <= TextOverlayData::kMaxPointSize);
        require(c.text.opacity >= 0 && c.text.opacity <= TextOverlayData::kMaxOpacity);
        break;
    case Command::SetMedia:
        require(c.media.id == c.id && c.id >= 0 && c.id <= kMaxOverlayId);
        require(c.media.rect.width() > 0 && c.media.rect.height() > 0);
        require(!c.media.filePath.isEmpty());
        require(c.media.opacity >= 0 && c.media.opacity <= 1);
        break;
    case Command::StartOutputs: {
        const selvane::OutputSettings s = applyOutputRequest(c.outputs, {});
        require(s.encoder.fps == 30 || s.encoder.fps == 60);
        require(s.encoder.bitrateKbps == 0 ||
                (s.encoder.bitrateKbps >= 100 && s.encoder.bitrateKbps <= 400000));
        if (s.size.explicitSize)
            require(s.size.size.width() % 2 == 0 && s.size.size.height() % 2 == 0 &&
                    s.size.size.width() >= 2 && s.size.size.height() <= 8192);
        break;
    }
    case Command::ReconnectTarget:
        require(c.id >= 0);
        break;
    case Command::LoadSchedule:
        require(!c.schedule.isEmpty());
        break;
    default:
        break;
    }
    for (const auto &v : {c.volume, c.previewVolume})
        require(!v || (*v >= 0 && *v <= 4));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    using namespace selvane::control;
    const QByteArray bytes(reinterpret_cast<const char *>(data), qsizetype(size));
    if (bytes.startsWith('@')) {
        const qsizetype first = bytes.indexOf('\n');
        const qsizetype second = first < 0 ? -1 : bytes.indexOf('\n', first + 1);
        const QByteArray method = bytes.mid(1, first < 0 ? -1 : first - 1);
        const QByteArray path =
            first < 0 ? QByteArray() : bytes.mid(first + 1, second < 0 ? -1 : second - first - 1);
        const QByteArray body = second < 0 ? QByteArray() : bytes.mid(second + 1);
        const Headers headers{{"authorization", "Bearer " + kToken.toByteArray()}};
        checkCommand(parseRequest(method, path, headers, body, kToken));
        return 0;
    }
    const HeadScan scan = scanHead(bytes);
    if (scan.state == HeadScan::Refused)
        checkRefusal(scan.refusal);
    if (scan.state != HeadScan::Complete)
        return 0;
    require(scan.headBytes > 0 && scan.headBytes <= bytes.size() &&
            scan.headBytes <= kMaxHeadBytes);
    const Refusal admitted = admitHead(scan.head, kToken);
    checkRefusal(admitted);
    const ParsedRequest parsed = parseRequest(scan.head.method, scan.head.path, scan.head.headers,
                                              bytes.mid(scan.headBytes), kToken);
    checkCommand(parsed);
    if (admitted.ok() || parsed.refusal.ok())
        require(bearerMatches(scan.head.header("authorization"), kToken));
    return 0;
}
