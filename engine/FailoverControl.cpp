#include "engine/FailoverControl.h"

#include "engine/ProgramSwitcher.h"
#include "input/FFmpegVideoDecoder.h"
#include "input/SourceAddress.h"
#include "input/StingerLoad.h"
#include "media/FramePool.h"
#include "media/SourceFeeds.h"

#include <QCoreApplication>
#include <QDebug>
#include <QFileInfo>
#include <QImageReader>
#include <QLinearGradient>
#include <QPainter>
#include <QRegularExpression>

namespace selvane {

namespace {
constexpr int kMinTimeMs = 100;
constexpr int kMaxTimeMs = 3'600'000;
// Pictures the standby may have in flight: its queue, the picture on air, the encoder's.
constexpr qint32 kStandbyPool = 32;

// A still picture (the decoder plays clips and streams; a picture is drawn once).
bool isPicture(const QString &address)
{
    const SourceAddress source(address);
    return source.kind() == SourceKind::LocalFile &&
           !QImageReader::imageFormat(source.localPath()).isEmpty();
}
} // namespace

FailoverControl::FailoverControl(SourceFeeds &feeds, ProgramSwitcher &switcher, QObject *parent)
    : QObject(parent), m_feeds(feeds), m_switcher(switcher),
      m_pool(std::make_unique<FramePool>(kStandbyPool, 1920, 1080)),
      m_decoder(std::make_unique<FFmpegVideoDecoder>())
{
    m_decoder->setFramePool(*m_pool);
    m_decoder->setFeed(&feeds.standby());
    connect(m_decoder.get(), &FFmpegVideoDecoder::decodeError, this,
            [this](SourceError code, const QString &detail, quint64 generation) {
                if (generation != m_generation)
                    return;
                qWarning().noquote()
                    << "Standby decoder:"
                    << sourceErrorLogText(code) + (detail.isEmpty() ? QString() : ": " + detail);
                if (m_content == Content::Backup && code != SourceError::None) {
                    // A backup that cannot be played leaves the slate to stand in.
                    qWarning().noquote() << "The backup of channel" << m_channel + 1
                                         << "cannot be played; the slate stands in for it";
                    loadSlate();
                }
            });
    connect(&switcher, &ProgramSwitcher::failedOver, this, &FailoverControl::onFailedOver,
            Qt::QueuedConnection);
    connect(&switcher, &ProgramSwitcher::returned, this, &FailoverControl::onReturned,
            Qt::QueuedConnection);
}

FailoverControl::~FailoverControl()
{
    m_decoder->stop();
}

int FailoverControl::backupChannelOf(const QString &backup)
{
    static const QRegularExpression channel(QStringLiteral("^channel:([1-4])$"),
                                            QRegularExpression::CaseInsensitiveOption);
    const QRegularExpressionMatch match = channel.match(backup.trimmed());
    return match.hasMatch() ? match.captured(1).toInt() - 1 : -1;
}

Problem FailoverControl::setSettings(const FailoverSettings &settings)
{
    for (int time : {settings.failoverMs, settings.returnMs})
        if (time < kMinTimeMs || time > kMaxTimeMs)
            return {ProblemKind::BadFailoverTime, {}, time};
    for (int c = 0; c < kChannelCount; ++c) {
        const QString backup = settings.backups[std::size_t(c)].trimmed();
        if (backup.isEmpty())
            continue;
        const int other = backupChannelOf(backup);
        const bool namesChannel =
            backup.startsWith(QStringLiteral("channel:"), Qt::CaseInsensitive);
        if ((namesChannel && (other < 0 || other == c)))
            return {ProblemKind::BadBackup, backup, c + 1};
        if (!namesChannel) {
            const SourceAddress source(backup);
            if (source.kind() == SourceKind::LocalFile && !QFileInfo(source.localPath()).isFile())
                return {ProblemKind::BadBackup, backup, c + 1};
        }
    }
    if (!settings.slatePath.isEmpty() && !QFileInfo(settings.slatePath).isReadable())
        return {ProblemKind::SlateUnreadable, settings.slatePath};
    const bool slateChanged =
        settings.slatePath != m_settings.slatePath || settings.slateText != m_settings.slateText;
    m_settings = settings;
    pushConfig();
    if (slateChanged && m_content == Content::Slate)
        m_loaded.clear(); // drawn again with its new look
    prepareFor(m_channel, m_size);
    return {};
}

void FailoverControl::setTransition(const Transition &transition)
{
    m_transition = transition;
    pushConfig();
}

void FailoverControl::pushConfig()
{
    FailoverConfig config;
    config.enabled = m_settings.enabled;
    config.failoverMs = m_settings.failoverMs;
    config.returnMs = m_settings.returnMs;
    for (int c = 0; c < kChannelCount; ++c)
        config.backupChannel[std::size_t(c)] = backupChannelOf(m_settings.backups[std::size_t(c)]);
    m_switcher.setFailover(config, m_transition);
}

void FailoverControl::prepareFor(int channel, QSize programSize)
{
    const ProgramBus &bus = m_feeds.bus();
    if (m_slateByHand && bus.program() != SourceFeeds::kStandby &&
        bus.target() != SourceFeeds::kStandby) {
        m_slateByHand = false; // something else went to air
        qInfo().noquote() << "Slate off air";
        emit slateChanged(false);
    }
    if (programSize.isValid() && programSize != m_size) {
        m_size = programSize;
        m_decoder->setTargetSize(programSize);
        if (m_content == Content::Slate)
            m_loaded.clear(); // drawn again at the new size
    }
    if (m_failedChannel >= 0 && channel != m_failedChannel) {
        // The operator put another channel on air: the failover is over.
        qInfo().noquote() << "Channel" << m_failedChannel + 1
                          << "is no longer stood in for: another channel went on air";
        m_failedChannel = -1;
        m_standIn.clear();
    }
    if (m_failedChannel >= 0 || m_slateByHand)
        return; // the stand-in on air keeps what it shows
    m_channel = channel;
    if (!m_settings.enabled) {
        load(Content::None, {});
        return;
    }
    const QString backup = SourceFeeds::isChannel(channel)
                               ? m_settings.backups[std::size_t(channel)].trimmed()
                               : QString();
    if (!backup.isEmpty() && backupChannelOf(backup) < 0)
        load(Content::Backup, backup);
    else
        loadSlate(); // the standby of a backup channel is the slate, should that one fail too
}

void FailoverControl::loadSlate()
{
    load(Content::Slate, m_settings.slatePath);
}

void FailoverControl::load(Content content, const QString &address)
{
    const QString key = QString::number(int(content)) + QLatin1Char('|') + address;
    if (key == m_loaded)
        return;
    m_loaded = key;
    m_content = content;
    if (content == Content::None) {
        m_generation = m_decoder->setSource({});
        m_switcher.setStandbyImage({});
        m_switcher.setStandbyCaption({});
        return;
    }
    const bool slate = content == Content::Slate;
    const QString text =
        slate ? (address.isEmpty() && m_settings.slateText.isEmpty() ? defaultSlateText()
                                                                     : m_settings.slateText)
              : QString();
    if (address.isEmpty() || isPicture(address)) {
        // A picture: drawn once at the program's size, with the slate's words.
        m_generation = m_decoder->setSource({});
        const QImage image =
            address.isEmpty() ? QImage() : QImage(SourceAddress(address).localPath());
        m_switcher.setStandbyCaption({});
        m_switcher.setStandbyImage(drawSlate(image, text, m_size, address.isEmpty()));
        return;
    }
    // A clip or a stream plays on, looping, with the words laid over it.
    m_switcher.setStandbyImage({});
    m_switcher.setStandbyCaption(text.isEmpty() ? nullptr
                                                : std::make_shared<StingerPicture>(stingerPictureOf(
                                                      drawSlate(QImage(), text, m_size, false))));
    m_generation = m_decoder->setSource(SourceAddress(address));
    m_decoder->setLoop(true);
}

void FailoverControl::showSlate(const Transition &transition)
{
    m_slateByHand = false;
    loadSlate();
    m_slateByHand = true;
    m_switcher.showStandby(transition);
    qInfo().noquote() << "Slate on air";
    emit slateChanged(true);
}

void FailoverControl::onFailedOver(int channel, int standIn)
{
    m_failedChannel = channel;
    ++m_failovers;
    if (SourceFeeds::isChannel(standIn))
        m_standIn = QStringLiteral("channel %1").arg(standIn + 1);
    else
        m_standIn =
            m_content == Content::Backup ? QStringLiteral("backup") : QStringLiteral("slate");
    qWarning().noquote() << "Channel" << channel + 1 << "failed on air; the" << m_standIn
                         << "stands in for it";
    emit failedOver(channel, m_standIn);
}

void FailoverControl::onReturned(int channel)
{
    m_failedChannel = -1;
    m_standIn.clear();
    ++m_returns;
    qInfo().noquote() << "Channel" << channel + 1 << "is back on air";
    emit returned(channel);
    prepareFor(m_channel, m_size);
}

QString FailoverControl::defaultSlateText()
{
    return QCoreApplication::translate("FailoverControl", "The programme will be back shortly");
}

QImage FailoverControl::drawSlate(const QImage &image, QString text, QSize size, bool card)
{
    if (!size.isValid())
        size = QSize(1920, 1080);
    QImage slate(size, QImage::Format_RGBA8888_Premultiplied);
    slate.fill(Qt::transparent);
    QPainter painter(&slate);
    painter.setRenderHint(QPainter::Antialiasing, true);
    painter.setRenderHint(QPainter::SmoothPixmapTransform, true);
    if (card) {
        QLinearGradient fill(0, 0, 0, size.height());
        fill.setColorAt(0.0, QColor(20, 32, 58));
        fill.setColorAt(1.0, QColor(8, 12, 24));
        painter.fillRect(slate.rect(), fill);
    } else if (!image.isNull()) {
        painter.fillRect(slate.rect(), Qt::black);
        const QSize scaled = image.size().scaled(size, Qt::KeepAspectRatio);
        painter.drawImage(QRect((size.width() - scaled.width()) / 2,
                                (size.height() - scaled.height()) / 2, scaled.width(),
                                scaled.height()),
                          image);
    }
    if (!text.isEmpty()) {
        QFont font = painter.font();
        font.setPixelSize(std::max(12, size.height() / 18));
        font.setBold(true);
        painter.setFont(font);
        // On the card the words stand in its middle; over a picture, in a band of their own.
        const int band = size.height() / 6;
        const QRect words(size.width() / 20,
                          card ? (size.height() - band) / 2
                               : size.height() - band - size.height() / 12,
                          size.width() * 9 / 10, band);
        if (!card)
            painter.fillRect(words, QColor(0, 0, 0, 160));
        painter.setPen(Qt::white);
        painter.drawText(words, Qt::AlignCenter | Qt::TextWordWrap, text);
    }
    painter.end();
    return slate;
}

} // namespace selvane
