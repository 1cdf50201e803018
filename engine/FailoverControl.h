#pragma once

// What stands in when a channel on air fails: the operator's failover settings, the standby
// that plays a channel's backup file or stream (or the slate) beside the channels, and the
// slate itself, drawn at the program's size. The program switcher decides when a failover
// happens, tick by tick; this keeps the standby ready for the channel on air, so that the
// stand-in has its picture when it is needed, and logs and counts what happened.
//
// Owns: the standby's decoder (its own thread and frame pool, feeding SourceFeeds::standby()).
//
// Threads: GUI thread; every method and signal is there. The switcher's reports arrive queued.

#include "engine/EngineTypes.h"
#include "engine/Problem.h"
#include "media/ProgramBus.h"

#include <QImage>
#include <QObject>
#include <memory>

class FFmpegVideoDecoder;
class FramePool;

namespace selvane {

class ProgramSwitcher;
class SourceFeeds;

class FailoverControl : public QObject
{
    Q_OBJECT

public:
    FailoverControl(SourceFeeds &feeds, ProgramSwitcher &switcher, QObject *parent = nullptr);
    ~FailoverControl() override;

    // Checks and keeps the settings: a backup "channel:M" must name another channel 1..4, the
    // times must lie within 100 ms .. 1 h, and the slate must be readable when given.
    Problem setSettings(const FailoverSettings &settings);
    const FailoverSettings &settings() const { return m_settings; }
    // How the program goes to a stand-in and back (a stinger only once its clip is loaded).
    void setTransition(const Transition &transition);

    // The channel on air changed, or the program's size: the standby gets ready for it.
    void prepareFor(int channel, QSize programSize);
    // The slate on air by hand, with `transition`; any cut takes it off.
    void showSlate(const Transition &transition);
    bool slateOnAir() const { return m_slateByHand; }

    // What the stats and the status show.
    int failedChannel() const { return m_failedChannel; }
    QString standIn() const { return m_standIn; }
    qint64 failovers() const { return m_failovers; }
    qint64 returns() const { return m_returns; }

    // The built-in slate's words, in the operator's language.
    static QString defaultSlateText();
    // The slate as a picture of `size`: the built-in card with `text` in its middle, or
    // `image` letterboxed (null: clear) with `text` in a band over its lower part.
    static QImage drawSlate(const QImage &image, QString text, QSize size, bool card);

signals:
    // `channel` failed on air; `standIn` replaces it ("channel 3", "backup", "slate").
    void failedOver(int channel, QString standIn);
    void returned(int channel);
    void slateChanged(bool onAir);

private:
    enum class Content
    {
        None,
        Backup, // a channel's backup file or stream
        Slate,
    };
    void onFailedOver(int channel, int standIn);
    void onReturned(int channel);
    // Loads what the standby is to show: `address` through the decoder, or a picture.
    void load(Content content, const QString &address);
    void loadSlate();
    void pushConfig();
    static int backupChannelOf(const QString &backup);

    SourceFeeds &m_feeds;
    ProgramSwitcher &m_switcher;
    std::unique_ptr<FramePool> m_pool;
    std::unique_ptr<FFmpegVideoDecoder> m_decoder;
    quint64 m_generation = 0;
    FailoverSettings m_settings;
    Transition m_transition;
    QSize m_size{1920, 1080};
    int m_channel = -1;
    Content m_content = Content::None;
    QString m_loaded; // the address or picture the standby holds
    bool m_slateByHand = false;
    int m_failedChannel = -1;
    QString m_standIn;
    qint64 m_failovers = 0;
    qint64 m_returns = 0;
};

} // namespace selvane
