#include "input/NativeCaptureRun.h"

#include "input/SourceAddress.h"
#include "input/WindowsCapture.h"

#include <QCoreApplication>
#include <QDebug>

extern "C" {
#include <libavutil/frame.h>
}

namespace selvane {

NativeCaptureRun::NativeCaptureRun(DecoderControls &controls, DecodeHost &host)
    : m_controls(controls), m_host(host)
{
}

#ifdef _WIN32

namespace {

std::wstring applicationDirectory()
{
    return QCoreApplication::applicationDirPath().toStdWString();
}

} // namespace

bool NativeCaptureRun::offeredFor(const SourceAddress &address)
{
    switch (address.kind()) {
    case SourceKind::DisplayCapture:
        return true;
    case SourceKind::WindowCapture: {
        std::string message;
        return win::loadWgcLibrary(applicationDirectory(), &message);
    }
    default:
        return false;
    }
}

NativeCaptureRun::Outcome NativeCaptureRun::run(const SourceAddress &address, QString *why)
{
    const SourceKind kind = address.kind();
    m_pictures = std::make_unique<PictureConverter>(0, AV_PIX_FMT_NONE);
    m_timelineId = m_host.timeline();
    std::string refusal;
    win::CaptureHooks hooks;
    hooks.stop = [this] {
        return m_host.cancelled();
    };
    hooks.paused = [this] {
        return !m_controls.playing.load();
    };
    hooks.flushIfAsked = [this] {
        if (m_controls.flushRequest.exchange(false))
            m_host.discardQueued();
    };
    hooks.deliver = [this](const std::uint8_t *bgra, int width, int height, std::int64_t timeUs) {
        deliver(bgra, width, height, timeUs);
    };
    hooks.report = [this, &refusal](const std::string &message) {
        if (m_delivered == 0)
            refusal = message;
        else
            qWarning().noquote() << "NativeCaptureRun:" << QString::fromStdString(message);
    };
    m_host.opened(0, true, true, 0);
    if (kind == SourceKind::WindowCapture) {
        win::captureWindowLoop(address.window(), hooks);
    } else {
        win::captureDesktopLoop(address.monitor(), address.systemCapture(), hooks);
    }
    if (m_delivered == 0 && !m_host.cancelled()) {
        *why = QString::fromStdString(refusal.empty() ? "no picture came" : refusal);
        return Outcome::Refused;
    }
    return Outcome::Ended;
}

#else

bool NativeCaptureRun::offeredFor(const SourceAddress &)
{
    return false;
}

NativeCaptureRun::Outcome NativeCaptureRun::run(const SourceAddress &, QString *why)
{
    *why = QStringLiteral("captured by the system only on Windows");
    return Outcome::Refused;
}

#endif

void NativeCaptureRun::deliver(const std::uint8_t *bgra, int width, int height, std::int64_t timeUs)
{
    // The picture is borrowed for the conversion: a frame that points into the capture's
    // buffer, nothing copied.
    AVFrame view{};
    view.format = AV_PIX_FMT_BGRA;
    view.width = width;
    view.height = height;
    view.data[0] = const_cast<std::uint8_t *>(bgra);
    view.linesize[0] = width * 4;
    const PictureConverter::Sizes sizes = m_pictures->sizesOf(&view);
    if (!(sizes == m_lastSizes)) {
        m_lastSizes = sizes;
        m_host.videoInfo(sizes.coded, sizes.display);
    }
    FrameWriter token = m_host.acquireFrame();
    if (!token) {
        m_host.pictureDropped();
        return;
    }
    const QSize target(m_controls.targetWidth.load(), m_controls.targetHeight.load());
    if (!m_pictures->convert(&view, PictureConverter::outputSize(sizes.display, target), token))
        return;
    const qint64 durationUs =
        m_lastUs == SourceTimeline::kNoTime ? 33'333 : std::max<qint64>(1, timeUs - m_lastUs);
    m_lastUs = timeUs;
    token->ptsUs = m_timeline.mapVideo(timeUs, durationUs);
    token->timeline = m_timelineId;
    FrameTokenPtr picture = std::move(token).publish();
    if (m_host.offerFrame(picture)) {
        if (m_delivered++ == 0)
            qInfo().noquote() << "NativeCaptureRun: first picture" << width << "x" << height
                              << "from the system's capture";
    } else
        m_host.pictureDropped();
}

} // namespace selvane
