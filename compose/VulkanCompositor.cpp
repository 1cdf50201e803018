#include "compose/VulkanCompositor.h"

#include "compose/TextOverlayData.h"
#include "media/LogThrottle.h"

#include <QDebug>
#include <QFont>
#include <QFontMetricsF>
#include <QGuiApplication>
#include <QImage>
#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QOpenGLFramebufferObject>
#include <QOpenGLFunctions>
#include <QOpenGLPaintDevice>
#include <QPainter>
#include <QPainterPath>
#include <QPen>
#include <QPolygonF>
#include <QSurfaceFormat>
#include <QThread>
#include <algorithm>
#include <cmath>
#include <cstring>

namespace {

constexpr const char *kGpuEnvVariable = "SELVANE_ENABLE_GL_READBACK_COMPOSITOR";

// A failing GPU frame is logged the first few times and then every few hundred frames, so a
// broken driver does not flood the log at the frame rate.
constexpr qint64 kGpuFailureLogFirst = 3;
constexpr qint64 kGpuFailureLogEvery = 300;

bool gpuPathRequested()
{
    return qEnvironmentVariableIntValue(kGpuEnvVariable) != 0;
}

// Releases the context on every way out of a GPU composition: no other code may find it
// current.
struct ContextRelease
{
    QOpenGLContext *context;
    ~ContextRelease() { context->doneCurrent(); }
};

QFont scaledFont(const TextOverlayData &data, double sy)
{
    QFont font(data.fontFamily);
    font.setPointSizeF(std::max(1.0, data.fontPointSize * sy));
    font.setWeight(data.bold ? QFont::Bold : QFont::Normal);
    font.setItalic(data.italic);
    font.setUnderline(data.underline);
    font.setStrikeOut(data.strikeOut);
    return font;
}

// Distances kept in scene units become whole output pixels, rounded half away from zero.
int scenePixels(int sceneUnits, double factor)
{
    return int(std::lround(sceneUnits * factor));
}

// One text overlay: background, shadow, outline, then the letters. Lines are laid out left- and
// top-aligned from the anchor (or the scroll position); every effect uses the same baselines so
// they stay registered with the letters.
void paintText(QPainter &painter, const TextOverlayData &data, int width, int height, double sx,
               double sy, qint64 elapsedUs)
{
    const QFont font = scaledFont(data, sy);
    const QFontMetricsF metrics(font, painter.device());
    const QStringList lines = data.text.split(QLatin1Char('\n'));
    double textWidth = 0.0;
    for (const QString &line : lines)
        textWidth = std::max(textWidth, metrics.horizontalAdvance(line));
    const double textHeight = metrics.height() + (lines.size() - 1) * metrics.lineSpacing();

    const QPointF anchor(data.posX * width, data.posY * height);
    const int padX = scenePixels(data.backgroundPadding, sx);
    const int padY = scenePixels(data.backgroundPadding, sy);
    const int outlinePx = data.outline ? scenePixels(data.outlineWidth, sy) : 0;
    const int shadowDx = data.shadow ? scenePixels(data.shadowOffsetX, sx) : 0;
    const int shadowDy = data.shadow ? scenePixels(data.shadowOffsetY, sy) : 0;

    // The 0..255 setting scales everything the overlay draws; each colour's own alpha multiplies
    // with it.
    painter.setOpacity(std::clamp(data.opacity, 0, TextOverlayData::kMaxOpacity) /
                       double(TextOverlayData::kMaxOpacity));

    QPointF textTopLeft = anchor;
    QRectF boxRect(anchor, QSizeF(textWidth, textHeight));
    QRectF clipRect;
    const bool scrolling = data.isScrolling();
    if (scrolling) {
        const double visibleWidth = data.scrollViewportWidth >= 1.0
                                        ? data.scrollViewportWidth * sx
                                        : std::max(0.0, width - anchor.x());
        const double viewportHeight =
            data.scrollViewportHeight >= 1.0
                ? data.scrollViewportHeight * sy
                : textHeight + std::max(0, shadowDy) + std::ceil(outlinePx / 2.0);
        clipRect = QRectF(anchor, QSizeF(visibleWidth, viewportHeight));
        boxRect = clipRect;

        const double distance = elapsedUs / 1e6 * data.scrollPixelsPerSecond();
        const double pass = std::max(0.001, textWidth + visibleWidth);
        if (distance >= pass * data.effectivePasses())
            return; // every pass done: the text stays off-screen
        const double offset = std::fmod(distance, pass);
        const double x = data.scrollDirection == TextOverlayData::ScrollRightToLeft
                             ? clipRect.left() + visibleWidth - offset
                             : clipRect.left() - textWidth + offset;
        textTopLeft = QPointF(x, anchor.y());
    }

    if (data.backgroundEnabled)
        painter.fillRect(boxRect.adjusted(-padX, -padY, padX, padY), data.backgroundColor);

    painter.save();
    if (scrolling)
        painter.setClipRect(clipRect, Qt::ReplaceClip);
    painter.setFont(font);
    const double firstBaseline = textTopLeft.y() + metrics.ascent();
    const auto baseline = [&](qsizetype line, QPointF offset) {
        return QPointF(textTopLeft.x(), firstBaseline + line * metrics.lineSpacing()) + offset;
    };
    if (data.shadow) {
        painter.setPen(data.shadowColor);
        for (qsizetype i = 0; i < lines.size(); ++i)
            painter.drawText(baseline(i, QPointF(shadowDx, shadowDy)), lines[i]);
    }
    if (data.outline && outlinePx > 0) {
        QPainterPath path;
        for (qsizetype i = 0; i < lines.size(); ++i)
            path.addText(baseline(i, QPointF()), font, lines[i]);
        painter.strokePath(
            path, QPen(data.outlineColor, outlinePx, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    }
    painter.setPen(data.fontColor);
    for (qsizetype i = 0; i < lines.size(); ++i)
        painter.drawText(baseline(i, QPointF()), lines[i]);
    painter.restore();
}

} // namespace

VulkanCompositor::VulkanCompositor(const FramePool &programPool) : m_pool(programPool)
{
    initOpenGl();
}

VulkanCompositor::~VulkanCompositor()
{
    // The framebuffer belongs to the context and must go while it is current.
    if (m_glFbo && m_glContext && m_glContext->makeCurrent(m_glSurface.get())) {
        m_glFbo.reset();
        m_glContext->doneCurrent();
    }
    m_glFbo.reset();
    m_glContext.reset();
    m_glSurface.reset();
}

void VulkanCompositor::initOpenGl()
{
    // Contexts need the GUI application's platform integration; a core-only process has none.
    if (!qobject_cast<QGuiApplication *>(QCoreApplication::instance()) ||
        !QOpenGLContext::supportsThreadedOpenGL()) {
        qWarning("VulkanCompositor: QOpenGLContext::create failed, using CPU composition");
        return;
    }
    QSurfaceFormat format;
    format.setRenderableType(QSurfaceFormat::OpenGL);
    format.setVersion(2, 1);
    format.setDepthBufferSize(0);
    format.setStencilBufferSize(0);
    format.setSamples(0);

    auto context = std::make_unique<QOpenGLContext>();
    context->setFormat(format);
    if (!context->create()) {
        qWarning("VulkanCompositor: QOpenGLContext::create failed, using CPU composition");
        return;
    }
    auto surface = std::make_unique<QOffscreenSurface>();
    surface->setFormat(context->format());
    surface->create();
    if (!surface->isValid()) {
        qWarning("VulkanCompositor: QOffscreenSurface invalid, using CPU composition");
        return;
    }
    if (!context->makeCurrent(surface.get())) {
        qWarning("VulkanCompositor: OpenGL makeCurrent failed, using CPU composition");
        return;
    }
    QOpenGLFunctions *gl = context->functions();
    const auto glString = [gl](GLenum name) {
        const GLubyte *value = gl->glGetString(name);
        return value ? QString::fromLatin1(reinterpret_cast<const char *>(value)) : QString();
    };
    const QString description =
        QStringLiteral("(%1, OpenGL %2)").arg(glString(GL_RENDERER), glString(GL_VERSION));
    context->doneCurrent();

    m_glContext = std::move(context);
    m_glSurface = std::move(surface);
    m_glReady = true;
    qInfo().noquote() << "VulkanCompositor: OpenGL offscreen GPU path ready (falls back to CPU "
                         "on errors)"
                      << description;
}

void VulkanCompositor::moveGlToThread(QThread *thread)
{
    if (m_glContext)
        m_glContext->moveToThread(thread);
}

void VulkanCompositor::setVideoPicture(int mediaId, FrameTokenPtr picture)
{
    if (picture)
        m_videoPictures.insert(mediaId, std::move(picture));
    else
        m_videoPictures.remove(mediaId);
}

QImage VulkanCompositor::pictureOf(const MediaOverlayRecord &record,
                                   const OverlayScene &scene) const
{
    if (record.kind != MediaOverlayRecord::OverlayVideo)
        return scene.images.value(record.id);
    const FrameTokenPtr token = m_videoPictures.value(record.id);
    if (!token || token->pixels.isEmpty())
        return {};
    // A view of the token's pixels: it is only read, and only while this frame is painted.
    return QImage(token->bits(), token->width, token->height, token->stride,
                  QImage::Format_RGBA8888);
}

int VulkanCompositor::overlayCount(const OverlayScene &scene) const
{
    int count = scene.hasDoodle() ? 1 : 0;
    for (const TextOverlayData &data : scene.texts)
        if (data.isDrawable())
            ++count;
    for (const MediaOverlayRecord &record : scene.media) {
        if (!record.visible || record.filePath.isEmpty())
            continue;
        const bool hasPicture = record.kind == MediaOverlayRecord::OverlayVideo
                                    ? m_videoPictures.contains(record.id)
                                    : !scene.images.value(record.id).isNull();
        if (hasPicture)
            ++count;
    }
    return count;
}

QImage VulkanCompositor::doodlePicture(const OverlayScene &scene, QSize size)
{
    if (!scene.hasDoodle() || size.width() < 1 || size.height() < 1)
        return QImage();
    if (!m_doodle.isNull() && m_doodle.size() == size && m_doodleVersion == scene.doodleVersion)
        return m_doodle;
    QImage picture(size, QImage::Format_RGBA8888_Premultiplied);
    picture.fill(Qt::transparent);
    const double sx = size.width() / kSceneWidth;
    const double sy = size.height() / kSceneHeight;
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing, true);
    for (const DoodleStroke &stroke : scene.doodle) {
        if (stroke.points.isEmpty())
            continue;
        // Line weight follows the vertical factor, as text does, so both keep their proportion.
        painter.setPen(QPen(stroke.color, std::max(1.0, stroke.width * sy), Qt::SolidLine,
                            Qt::RoundCap, Qt::RoundJoin));
        QPolygonF line;
        line.reserve(stroke.points.size());
        for (const QPointF &p : stroke.points)
            line.append(QPointF(p.x() * sx, p.y() * sy));
        if (line.size() == 1)
            painter.drawPoint(line.first()); // a tap leaves a dot
        else
            painter.drawPolyline(line);
    }
    painter.end();
    m_doodle = picture;
    m_doodleVersion = scene.doodleVersion;
    return m_doodle;
}

FrameTokenPtr VulkanCompositor::compose(const FrameTokenPtr &base, const OverlayScene *scene)
{
    m_lastPath = Path::PassThrough;
    if (!base || base->pixels.isEmpty() || !scene)
        return base;
    const int overlays = overlayCount(*scene);
    if (overlays == 0)
        return base;
    FrameWriter out = m_pool.acquire();
    if (!out)
        return base; // no overlays on this frame rather than no frame

    if (m_glReady && overlays > kGpuMinOverlaysExclusive && gpuPathRequested()) {
        if (composeOnGpu(*base, out, *scene)) {
            out->ptsUs = base->ptsUs;
            out->timeline = base->timeline;
            m_lastPath = Path::Gpu;
            return std::move(out).publish();
        }
        ++m_gpuFailures;
        if (selvane::shouldLog(m_gpuFailures, kGpuFailureLogFirst, kGpuFailureLogEvery))
            qWarning() << "VulkanCompositor: GPU composition failed, frame composed on the CPU"
                       << "(failures:" << m_gpuFailures << ")";
    }

    out.prepare(base->width, base->height, base->stride);
    out->flag = true;
    std::memcpy(out.bits(), base->bits(), std::size_t(base->stride * base->height));
    {
        QImage canvas(out.bits(), out->width, out->height, out->stride, QImage::Format_RGBA8888);
        QPainter painter(&canvas);
        paintOverlays(painter, canvas.width(), canvas.height(), *scene);
    }
    out->ptsUs = base->ptsUs;
    out->timeline = base->timeline;
    m_lastPath = Path::Cpu;
    return std::move(out).publish();
}

bool VulkanCompositor::composeOnGpu(const FrameToken &base, FrameWriter &out,
                                    const OverlayScene &scene)
{
    const int width = base.width;
    const int height = base.height;
    if (width < 1 || height < 1 || base.stride < qint64(width) * 4)
        return false;
    if (!m_glContext->makeCurrent(m_glSurface.get()))
        return false;
    const ContextRelease release{m_glContext.get()};

    if (!m_glFbo || m_glFbo->size() != QSize(width, height)) {
        m_glFbo.reset();
        auto fbo = std::make_unique<QOpenGLFramebufferObject>(
            QSize(width, height), QOpenGLFramebufferObject::NoAttachment);
        if (!fbo->isValid())
            return false;
        m_glFbo = std::move(fbo);
    }
    if (!m_glFbo->bind())
        return false;

    const QImage baseImage(base.bits(), width, height, base.stride, QImage::Format_RGBA8888);
    bool painted = false;
    {
        QOpenGLPaintDevice device(width, height);
        // Same resolution as the CPU canvas, so point sizes become the same pixel sizes.
        device.setDotsPerMeterX(baseImage.dotsPerMeterX());
        device.setDotsPerMeterY(baseImage.dotsPerMeterY());
        QPainter painter(&device);
        if (painter.isActive()) {
            // The framebuffer holds the previous frame: the base replaces it, whatever its alpha.
            painter.setCompositionMode(QPainter::CompositionMode_Source);
            painter.drawImage(QRect(0, 0, width, height), baseImage);
            painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
            paintOverlays(painter, width, height, scene);
            painter.end();
            painted = true;
        }
    }
    QImage result = painted ? m_glFbo->toImage() : QImage();
    m_glFbo->release();
    if (result.isNull() || result.width() != width || result.height() != height)
        return false;
    if (result.format() != QImage::Format_RGBA8888)
        result = result.convertToFormat(QImage::Format_RGBA8888);

    out.prepare(width, height, base.stride);
    out->flag = true;
    const qsizetype rowBytes = qsizetype(width) * 4;
    if (result.bytesPerLine() == out->stride) {
        std::memcpy(out.bits(), result.constBits(), std::size_t(out->stride * height));
    } else {
        for (int y = 0; y < height; ++y)
            std::memcpy(out.bits() + y * out->stride, result.constScanLine(y),
                        std::size_t(rowBytes));
    }
    return true;
}

void VulkanCompositor::paintOverlays(QPainter &painter, int width, int height,
                                     const OverlayScene &scene)
{
    painter.setRenderHint(QPainter::Antialiasing, false);
    painter.setRenderHint(QPainter::SmoothPixmapTransform, false);
    const double sx = width < 1 || height < 1 ? 0.0 : width / kSceneWidth;
    const double sy = width < 1 || height < 1 ? 0.0 : height / kSceneHeight;

    // Media overlays (images and videos) in the manager's order: first drawn is lowest.
    for (const MediaOverlayRecord &record : scene.media) {
        if (!record.visible || record.filePath.isEmpty())
            continue;
        const QImage picture = pictureOf(record, scene);
        if (picture.isNull())
            continue;
        painter.setOpacity(std::clamp(record.opacity, 0.0, 1.0));
        const QRectF target(record.rect.x() * sx, record.rect.y() * sy, record.rect.width() * sx,
                            record.rect.height() * sy);
        if (picture.width() < 1 || picture.height() < 1 || target.width() <= 0 ||
            target.height() <= 0) {
            painter.drawImage(target, picture);
            continue;
        }
        // Fit inside the rectangle keeping the aspect ratio, centred: pillar- or letter-boxed.
        const double s =
            std::min(target.width() / picture.width(), target.height() / picture.height());
        const QRectF fitted(target.left() + (target.width() - s * picture.width()) * 0.5,
                            target.top() + (target.height() - s * picture.height()) * 0.5,
                            s * picture.width(), s * picture.height());
        painter.drawImage(fitted, picture, QRectF(picture.rect()));
    }
    painter.setOpacity(1.0);

    // Text overlays, lowest stacking key first; equal keys keep the manager's order.
    QList<const TextOverlayData *> texts;
    for (const TextOverlayData &data : scene.texts)
        if (data.isDrawable())
            texts.append(&data);
    std::stable_sort(
        texts.begin(), texts.end(),
        [](const TextOverlayData *a, const TextOverlayData *b) { return a->zIndex < b->zIndex; });
    if (!texts.isEmpty()) {
        painter.save();
        painter.setRenderHint(QPainter::Antialiasing, true);
        painter.setRenderHint(QPainter::TextAntialiasing, true);
        const qint64 nowUs = scene.nowUs();
        for (const TextOverlayData *data : texts)
            paintText(painter, *data, width, height, sx, sy,
                      scene.scrollElapsedUs(data->id, nowUs));
        painter.restore();
    }
    painter.setOpacity(1.0);

    // The doodle layer on top of everything; its picture covers the whole scene.
    const QImage doodle = doodlePicture(scene, QSize(width, height));
    if (!doodle.isNull()) {
        painter.save();
        painter.setRenderHint(QPainter::SmoothPixmapTransform, true);
        painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
        painter.drawImage(QRectF(0, 0, width, height), doodle, QRectF(doodle.rect()));
        painter.restore();
    }
}
