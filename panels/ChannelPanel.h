#pragma once

// One input channel at the operator's desk: live thumbnail, source label, state (with the error
// when there is one), and the buttons to choose a source, clear it, pause or play, loop, seek
// (files) and Take. It holds no media state of its own: it shows the engine's ChannelStats and
// asks the window (signals) for every action. GUI thread only.
//
// Also its failover backup (chosen from a menu: none, another channel, a file or an address) and,
// while the channel fails on air, what stands in for it.
//
// Emits: chooseSourceRequested, clearRequested, takeRequested, previewRequested,
// pauseRequested(bool pause), loopRequested(bool loop), seekRequested(ms),
// backupChosen(backup) ("" none, "channel:M"), chooseBackupRequested(file).

#include "engine/EngineTypes.h"

#include <QFrame>
#include <QImage>

class QLabel;
class QPushButton;
class QSlider;

namespace selvane {

class ChannelThumbnail;

class ChannelPanel : public QFrame
{
    Q_OBJECT

public:
    // `channel`: 0..3 (shown as 1..4).
    explicit ChannelPanel(int channel, QWidget *parent = nullptr);

    int channel() const { return m_channel; }
    void setThumbnail(const QImage &image);
    void showStats(const ChannelStats &stats);
    void setOnProgram(bool onProgram);
    bool isOnProgram() const { return m_onProgram; }
    void setOnPreview(bool onPreview);
    bool isOnPreview() const { return m_onPreview; }
    // The last error reported for the channel; cleared by a new source.
    void setError(const QString &message);
    QString stateText() const;
    // The backup as the failover settings keep it ("" none, "channel:M", an address).
    void setBackup(const QString &backup);
    // While the channel fails on air: what stands in ("channel 2", "backup", "slate"); empty
    // when it does not.
    void setStandIn(const QString &standIn);
    // The engine's word for a stand-in ("channel 2", "backup", "slate") in the operator's words.
    static QString standInText(const QString &standIn);

signals:
    void chooseSourceRequested();
    void clearRequested();
    void takeRequested();
    // The operator clicked the picture: this channel to the preview bus.
    void previewRequested();
    void pauseRequested(bool pause);
    void loopRequested(bool loop);
    void seekRequested(qint64 positionMs);
    void backupChosen(const QString &backup);
    // The operator wants to choose a backup file (`file`) or type an address.
    void chooseBackupRequested(bool file);

protected:
    void changeEvent(QEvent *event) override;

private:
    void retranslateUi();
    void showState();
    void showTally();
    static QString timeText(qint64 ms);
    void showBackupMenu();
    void showBackup();

    int m_channel = 0;
    bool m_onProgram = false;
    bool m_onPreview = false;
    ChannelStats m_stats;
    QString m_error;
    QString m_backup;
    QString m_standIn;
    qint64 m_positionMs = 0;
    bool m_seeking = false;

    ChannelThumbnail *m_thumbnail = nullptr;
    QLabel *m_title = nullptr;
    QLabel *m_source = nullptr;
    QLabel *m_state = nullptr;
    QPushButton *m_choose = nullptr;
    QPushButton *m_clear = nullptr;
    QPushButton *m_pause = nullptr;
    QPushButton *m_loop = nullptr;
    QPushButton *m_take = nullptr;
    QPushButton *m_backupButton = nullptr;
    QSlider *m_seek = nullptr;
    QLabel *m_time = nullptr;
};

} // namespace selvane
