#include "input/ScreenCapture.h"

#include "input/SourceAddress.h"
#include "media/FfmpegTypes.h"

#include <QSize>

#ifdef SELVANE_HAVE_XCB
#include <xcb/randr.h>
#include <xcb/xcb.h>
#endif

extern "C" {
#include <libavdevice/avdevice.h>
#include <libavformat/avformat.h>
}

#include <cstdlib>
#include <memory>

namespace selvane {

namespace {
std::mutex g_connectMutex;
} // namespace

std::unique_lock<std::mutex> lockDisplayConnect()
{
    return std::unique_lock(g_connectMutex);
}

const char *grabFormatName()
{
#ifdef _WIN32
    return "gdigrab";
#else
    return "x11grab";
#endif
}

QString captureWindowLabel(const CaptureWindow &window)
{
    return QStringLiteral("%1  [0x%2]").arg(window.title).arg(window.handle, 0, 16);
}

#ifdef SELVANE_HAVE_XCB

namespace {

constexpr int kLongestTitle = 384;

struct Display
{
    xcb_connection_t *c = nullptr;
    xcb_screen_t *screen = nullptr;

    Display()
    {
        const char *name = std::getenv("DISPLAY");
        if (!name || !*name)
            return;
        int number = 0;
        {
            const std::unique_lock lock = lockDisplayConnect();
            c = xcb_connect(name, &number);
        }
        if (xcb_connection_has_error(c)) {
            xcb_disconnect(c);
            c = nullptr;
            return;
        }
        xcb_screen_iterator_t it = xcb_setup_roots_iterator(xcb_get_setup(c));
        for (int i = 0; it.rem && i < number; ++i)
            xcb_screen_next(&it);
        screen = it.rem ? it.data : nullptr;
    }
    ~Display()
    {
        if (c)
            xcb_disconnect(c);
    }
    Display(const Display &) = delete;
    Display &operator=(const Display &) = delete;
    bool ok() const { return c && screen; }

    xcb_atom_t atom(const char *name) const
    {
        std::unique_ptr<xcb_intern_atom_reply_t, decltype(&std::free)> reply(
            xcb_intern_atom_reply(c, xcb_intern_atom(c, 1, uint16_t(strlen(name)), name), nullptr),
            &std::free);
        return reply ? reply->atom : xcb_atom_t(XCB_ATOM_NONE);
    }

    // The property's bytes (nothing when it is not set).
    QByteArray property(xcb_window_t window, xcb_atom_t property, xcb_atom_t type,
                        uint32_t longLength = 1024) const
    {
        if (property == XCB_ATOM_NONE)
            return {};
        std::unique_ptr<xcb_get_property_reply_t, decltype(&std::free)> reply(
            xcb_get_property_reply(c, xcb_get_property(c, 0, window, property, type, 0, longLength),
                                   nullptr),
            &std::free);
        if (!reply || reply->type == XCB_ATOM_NONE)
            return {};
        return QByteArray(static_cast<const char *>(xcb_get_property_value(reply.get())),
                          xcb_get_property_value_length(reply.get()));
    }

    bool isWindow(xcb_window_t window) const
    {
        std::unique_ptr<xcb_get_window_attributes_reply_t, decltype(&std::free)> reply(
            xcb_get_window_attributes_reply(c, xcb_get_window_attributes(c, window), nullptr),
            &std::free);
        return reply != nullptr;
    }

    // Of a window (nothing for anything else, pixmaps included).
    std::optional<QRect> geometry(xcb_window_t window) const
    {
        if (!isWindow(window))
            return std::nullopt;
        std::unique_ptr<xcb_get_geometry_reply_t, decltype(&std::free)> reply(
            xcb_get_geometry_reply(c, xcb_get_geometry(c, window), nullptr), &std::free);
        if (!reply)
            return std::nullopt;
        return QRect(reply->x, reply->y, reply->width, reply->height);
    }
};

QString windowTitle(const Display &d, xcb_window_t window)
{
    QString title = QString::fromUtf8(
        d.property(window, d.atom("_NET_WM_NAME"), d.atom("UTF8_STRING"), kLongestTitle));
    if (title.isEmpty())
        title = QString::fromLatin1(
            d.property(window, XCB_ATOM_WM_NAME, XCB_ATOM_STRING, kLongestTitle));
    return title.left(kLongestTitle);
}

} // namespace

bool hasCaptureDisplay()
{
    return Display().ok();
}

struct WindowSizeWatch::Connection
{
    Display display;
};

WindowSizeWatch::WindowSizeWatch(quint64 window)
    : m_connection(std::make_unique<Connection>()), m_window(window)
{
}

WindowSizeWatch::~WindowSizeWatch() = default;

std::optional<QSize> WindowSizeWatch::size()
{
    const Display &d = m_connection->display;
    if (!d.ok() || m_window == 0 || m_window > 0xffffffffULL || xcb_connection_has_error(d.c))
        return std::nullopt;
    const std::optional<QRect> geometry = d.geometry(xcb_window_t(m_window));
    return geometry ? std::optional<QSize>(geometry->size()) : std::nullopt;
}

QList<CaptureMonitor> listCaptureMonitors()
{
    QList<CaptureMonitor> monitors;
    Display d;
    if (!d.ok())
        return monitors;
    std::unique_ptr<xcb_randr_get_monitors_reply_t, decltype(&std::free)> reply(
        xcb_randr_get_monitors_reply(d.c, xcb_randr_get_monitors(d.c, d.screen->root, 1), nullptr),
        &std::free);
    if (reply) {
        for (auto it = xcb_randr_get_monitors_monitors_iterator(reply.get()); it.rem;
             xcb_randr_monitor_info_next(&it)) {
            CaptureMonitor monitor;
            monitor.index = int(monitors.size());
            std::unique_ptr<xcb_get_atom_name_reply_t, decltype(&std::free)> name(
                xcb_get_atom_name_reply(d.c, xcb_get_atom_name(d.c, it.data->name), nullptr),
                &std::free);
            if (name)
                monitor.name = QString::fromLatin1(xcb_get_atom_name_name(name.get()),
                                                   xcb_get_atom_name_name_length(name.get()));
            monitor.geometry = QRect(it.data->x, it.data->y, it.data->width, it.data->height);
            if (!monitor.geometry.isEmpty())
                monitors << monitor;
        }
    }
    if (monitors.isEmpty())
        monitors << CaptureMonitor{
            0, QStringLiteral("screen"),
            QRect(0, 0, d.screen->width_in_pixels, d.screen->height_in_pixels)};
    return monitors;
}

QList<CaptureWindow> listCaptureWindows()
{
    QList<CaptureWindow> windows;
    Display d;
    if (!d.ok())
        return windows;
    // A window manager lists its clients; without one the root's children are the windows.
    QList<xcb_window_t> candidates;
    const QByteArray clients =
        d.property(d.screen->root, d.atom("_NET_CLIENT_LIST"), XCB_ATOM_WINDOW, 65536);
    for (qsizetype i = 0; i + 4 <= clients.size(); i += 4)
        candidates << *reinterpret_cast<const xcb_window_t *>(clients.constData() + i);
    if (candidates.isEmpty()) {
        std::unique_ptr<xcb_query_tree_reply_t, decltype(&std::free)> tree(
            xcb_query_tree_reply(d.c, xcb_query_tree(d.c, d.screen->root), nullptr), &std::free);
        if (tree) {
            const xcb_window_t *children = xcb_query_tree_children(tree.get());
            for (int i = 0; i < xcb_query_tree_children_length(tree.get()); ++i)
                candidates << children[i];
        }
    }
    const xcb_atom_t wmState = d.atom("WM_STATE");
    for (xcb_window_t window : std::as_const(candidates)) {
        std::unique_ptr<xcb_get_window_attributes_reply_t, decltype(&std::free)> attributes(
            xcb_get_window_attributes_reply(d.c, xcb_get_window_attributes(d.c, window), nullptr),
            &std::free);
        if (!attributes || attributes->map_state != XCB_MAP_STATE_VIEWABLE ||
            attributes->override_redirect)
            continue;
        const QByteArray state = d.property(window, wmState, wmState, 2);
        constexpr uint32_t kIconicState = 3;
        if (state.size() >= 4 &&
            *reinterpret_cast<const uint32_t *>(state.constData()) == kIconicState)
            continue;
        const QByteArray owner = d.property(window, XCB_ATOM_WM_TRANSIENT_FOR, XCB_ATOM_WINDOW, 1);
        if (owner.size() >= 4) {
            // Owned by another window (a dialog, a tool window): not listed. An owner that does
            // not exist, or the root, owns nothing.
            const xcb_window_t ownerWindow =
                *reinterpret_cast<const xcb_window_t *>(owner.constData());
            if (ownerWindow != 0 && ownerWindow != d.screen->root && d.geometry(ownerWindow))
                continue;
        }
        const QString title = windowTitle(d, window);
        if (!title.isEmpty())
            windows << CaptureWindow{window, title};
    }
    return windows;
}

std::optional<QSize> captureWindowSize(quint64 handle)
{
    Display d;
    if (!d.ok() || handle == 0 || handle > 0xffffffffULL)
        return std::nullopt;
    const std::optional<QRect> geometry = d.geometry(xcb_window_t(handle));
    if (!geometry)
        return std::nullopt;
    return geometry->size();
}

GrabInput grabInputFor(const SourceAddress &address, int framesPerSecond)
{
    GrabInput grab;
    Display d;
    if (!d.ok()) {
        grab.error = SourceError::CaptureNoDisplay;
        return grab;
    }
    grab.url = qgetenv("DISPLAY");
    grab.options << std::pair{QByteArray("framerate"), QByteArray::number(framesPerSecond)};
    grab.options << std::pair{QByteArray("draw_mouse"),
                              QByteArray(address.drawsCursor() ? "1" : "0")};
    if (address.kind() == SourceKind::WindowCapture) {
        const quint64 handle = address.window();
        const std::optional<QRect> geometry = handle != 0 && handle <= 0xffffffffULL
                                                  ? d.geometry(xcb_window_t(handle))
                                                  : std::nullopt;
        if (!geometry || geometry->isEmpty()) {
            grab.error = SourceError::CaptureWindowInvalid;
            return grab;
        }
        grab.window = handle;
        grab.size = geometry->size();
        grab.options << std::pair{QByteArray("window_id"), QByteArray::number(handle)};
    } else {
        const int index = address.monitor();
        const QList<CaptureMonitor> monitors = listCaptureMonitors();
        if (index >= monitors.size()) {
            grab.error = SourceError::CaptureMonitorInvalid;
            return grab;
        }
        const QRect area = monitors[index].geometry;
        grab.size = area.size();
        grab.url += QStringLiteral("+%1,%2").arg(area.x()).arg(area.y()).toLatin1();
    }
    grab.options << std::pair{
        QByteArray("video_size"),
        QStringLiteral("%1x%2").arg(grab.size.width()).arg(grab.size.height()).toLatin1()};
    return grab;
}

#elif !defined(_WIN32) // neither X11 nor Windows: nothing to capture

bool hasCaptureDisplay()
{
    return false;
}
QList<CaptureMonitor> listCaptureMonitors()
{
    return {};
}
QList<CaptureWindow> listCaptureWindows()
{
    return {};
}
std::optional<QSize> captureWindowSize(quint64)
{
    return std::nullopt;
}
GrabInput grabInputFor(const SourceAddress &, int)
{
    GrabInput grab;
    grab.error = SourceError::CaptureUnavailable;
    return grab;
}
struct WindowSizeWatch::Connection
{
};
WindowSizeWatch::WindowSizeWatch(quint64 window) : m_window(window) {}
WindowSizeWatch::~WindowSizeWatch() = default;
std::optional<QSize> WindowSizeWatch::size()
{
    return std::nullopt;
}

#endif

QImage grabStill(const SourceAddress &address, QSize fit)
{
    const GrabInput grab = grabInputFor(address);
    ffsupport::ensureMediaLibrariesReady();
    const AVInputFormat *format = av_find_input_format(grabFormatName());
    if (grab.error != SourceError::None || !format)
        return {};
    AVDictionary *options = nullptr;
    for (const auto &[key, value] : grab.options)
        av_dict_set(&options, key.constData(), value.constData(), 0);
    AVFormatContext *context = nullptr;
    int err = 0;
    {
        const std::unique_lock lock = lockDisplayConnect();
        err = avformat_open_input(&context, grab.url.constData(), format, &options);
    }
    av_dict_free(&options);
    if (err < 0)
        return {};
    QImage still;
    AVPacket *packet = av_packet_alloc();
    if (packet && context->nb_streams > 0 && av_read_frame(context, packet) >= 0) {
        // The grabbers hand whole pictures of packed 32-bit pixels, B G R x in memory, top row
        // first.
        const AVCodecParameters *picture = context->streams[0]->codecpar;
        const bool packed =
            picture->format == AV_PIX_FMT_BGR0 || picture->format == AV_PIX_FMT_BGRA;
        if (packed && packet->size >= picture->width * picture->height * 4)
            still = QImage(packet->data, picture->width, picture->height, picture->width * 4,
                           QImage::Format_RGB32)
                        .scaled(fit, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    }
    av_packet_free(&packet);
    avformat_close_input(&context);
    return still;
}

} // namespace selvane
