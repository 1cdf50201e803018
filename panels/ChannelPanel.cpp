#include "panels/ChannelPanel.h"

#include <QEvent>
#include <QFileInfo>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QMenu>
#include <QMouseEvent>
#include <QPainter>
#include <QPushButton>
#include <QSlider>
#include <QVBoxLayout>
#include <functional>

namespace selvane {

// The channel's live picture, letterboxed; a dark field while there is none.
class ChannelThumbnail : public QWidget
{
public:
    explicit ChannelThumbnail(QWidget *parent) : QWidget(parent)
    {
        setMinimumSize(160, 90);
        setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
        setAttribute(Qt::WA_OpaquePaintEvent);
    }
    QSize sizeHint() const override { return {256, 144}; }
    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override { return width * 9 / 16; }
    void setImage(const QImage &image)
    {
        m_image = image;
        update();
    }
    void clear()
    {
        if (m_image.isNull())
            return;
        m_image = QImage();
        update();
    }
    std::function<void()> clicked;

protected:
    void mousePressEvent(QMouseEvent *event) override
    {
        if (event->button() == Qt::LeftButton && clicked)
            clicked();
    }
    void paintEvent(QPaintEvent *) override
    {
        QPainter painter(this);
        painter.fillRect(rect(), QColor(0x0c, 0x0e, 0x12));
        if (m_image.isNull())
            return;
        QRect target(QPoint(0, 0), m_image.size().scaled(size(), Qt::KeepAspectRatio));
        target.moveCenter(rect().center());
        painter.drawImage(target, m_image);
    }

private:
    QImage m_image;
};

ChannelPanel::ChannelPanel(int channel, QWidget *parent) : QFrame(parent), m_channel(channel)
{
    setObjectName(QStringLiteral("channelPanel%1").arg(channel + 1));
    // Fixed English names: automation scripts find the channels by them.
    setAccessibleName(QStringLiteral("Channel %1").arg(channel + 1));
    setFrameShape(QFrame::StyledPanel);

    m_title = new QLabel(this);
    m_title->setObjectName("channelTitle");
    m_source = new QLabel(this);
    m_source->setObjectName("channelSource");
    m_source->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_source->setMinimumWidth(60);
    m_state = new QLabel(this);
    m_state->setObjectName("channelState");
    m_state->setWordWrap(true);
    m_thumbnail = new ChannelThumbnail(this);
    m_thumbnail->clicked = [this] {
        emit previewRequested();
    };

    m_choose = new QPushButton(this);
    m_choose->setAccessibleName("Choose Source");
    m_clear = new QPushButton(this);
    m_clear->setAccessibleName("Clear");
    m_take = new QPushButton(this);
    m_take->setAccessibleName("Take");
    m_take->setObjectName("takeButton");
    m_backupButton = new QPushButton(this);
    m_backupButton->setAccessibleName("Backup");
    m_pause = new QPushButton(this);
    m_pause->setCheckable(true);
    m_loop = new QPushButton(this);
    m_loop->setCheckable(true);
    m_loop->setChecked(true);
    m_seek = new QSlider(Qt::Horizontal, this);
    m_seek->setRange(0, 0);
    m_time = new QLabel(this);
    m_time->setObjectName("channelTime");

    // The row of four channels must fit a laptop screen beside the docks: buttons give way.
    for (QPushButton *button : {m_choose, m_clear, m_take, m_pause, m_loop, m_backupButton}) {
        button->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
        button->setMinimumWidth(36);
    }
    m_source->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    auto *header = new QHBoxLayout;
    header->addWidget(m_title);
    header->addWidget(m_state, 1);
    auto *buttons = new QGridLayout;
    buttons->addWidget(m_choose, 0, 0, 1, 2);
    buttons->addWidget(m_take, 0, 2);
    buttons->addWidget(m_clear, 1, 0);
    buttons->addWidget(m_pause, 1, 1);
    buttons->addWidget(m_loop, 1, 2);
    buttons->addWidget(m_backupButton, 2, 0, 1, 3);
    auto *seekRow = new QHBoxLayout;
    seekRow->addWidget(m_seek, 1);
    seekRow->addWidget(m_time);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(6, 6, 6, 6);
    layout->setSpacing(4);
    layout->addLayout(header);
    layout->addWidget(m_thumbnail, 1);
    layout->addWidget(m_source);
    layout->addLayout(seekRow);
    layout->addLayout(buttons);

    connect(m_choose, &QPushButton::clicked, this, &ChannelPanel::chooseSourceRequested);
    connect(m_clear, &QPushButton::clicked, this, &ChannelPanel::clearRequested);
    connect(m_backupButton, &QPushButton::clicked, this, &ChannelPanel::showBackupMenu);
    connect(m_take, &QPushButton::clicked, this, &ChannelPanel::takeRequested);
    connect(m_pause, &QPushButton::clicked, this,
            [this](bool paused) { emit pauseRequested(paused); });
    connect(m_loop, &QPushButton::clicked, this, [this](bool loop) { emit loopRequested(loop); });
    connect(m_seek, &QSlider::sliderPressed, this, [this] { m_seeking = true; });
    connect(m_seek, &QSlider::sliderReleased, this, [this] {
        m_seeking = false;
        emit seekRequested(qint64(m_seek->value()) * 1000);
    });
    connect(m_seek, &QSlider::actionTriggered, this, [this](int action) {
        // Page steps and keys seek at once; dragging seeks on release.
        if (action != QSlider::SliderMove && !m_seeking)
            QMetaObject::invokeMethod(
                this, [this] { emit seekRequested(qint64(m_seek->value()) * 1000); },
                Qt::QueuedConnection);
    });
    retranslateUi();
    showState();
}

void ChannelPanel::setThumbnail(const QImage &image)
{
    if (m_stats.state == ChannelState::Idle)
        return;
    m_thumbnail->setImage(image);
}

void ChannelPanel::setOnProgram(bool onProgram)
{
    if (m_onProgram == onProgram)
        return;
    m_onProgram = onProgram;
    setProperty("onProgram", onProgram);
    showTally();
    retranslateUi();
}

void ChannelPanel::setOnPreview(bool onPreview)
{
    if (m_onPreview == onPreview)
        return;
    m_onPreview = onPreview;
    setProperty("onPreview", onPreview);
    showTally();
}

void ChannelPanel::showTally()
{
    // The tally colours: red on program, green on preview (red wins when both).
    setStyleSheet(m_onProgram   ? "selvane--ChannelPanel { border: 2px solid #e03030; }"
                  : m_onPreview ? "selvane--ChannelPanel { border: 2px solid #2eb84d; }"
                                : QString());
}

void ChannelPanel::setError(const QString &message)
{
    m_error = message;
    showState();
}

void ChannelPanel::showStats(const ChannelStats &stats)
{
    const bool sourceChanged = stats.source != m_stats.source;
    const bool stateChanged = stats.state != m_stats.state || stats.live != m_stats.live;
    if (sourceChanged && !stats.source.isEmpty())
        m_error.clear();
    m_stats = stats;
    if (stats.state == ChannelState::Idle)
        m_thumbnail->clear();
    if (sourceChanged) {
        m_source->setText(stats.source.isEmpty()
                              ? tr("(no source)")
                              : m_source->fontMetrics().elidedText(stats.source, Qt::ElideMiddle,
                                                                   qMax(120, m_source->width())));
        m_source->setToolTip(stats.source);
    }
    if (sourceChanged || stateChanged)
        showState();
    const bool seekable = stats.durationMs > 0 && !stats.live;
    m_seek->setEnabled(seekable);
    m_pause->setEnabled(stats.state == ChannelState::Playing ||
                        stats.state == ChannelState::Paused);
    m_pause->setChecked(stats.state == ChannelState::Paused);
    m_loop->setChecked(stats.loop);
    m_clear->setEnabled(!stats.source.isEmpty());
    if (seekable) {
        const int seconds = int(stats.durationMs / 1000);
        if (m_seek->maximum() != seconds)
            m_seek->setRange(0, seconds);
        if (!m_seeking && !m_seek->isSliderDown())
            m_seek->setValue(int(stats.positionMs / 1000));
        m_time->setText(timeText(stats.positionMs) + " / " + timeText(stats.durationMs));
    } else {
        m_seek->setRange(0, 0);
        m_time->setText(stats.live ? tr("LIVE") : QString());
    }
}

void ChannelPanel::setBackup(const QString &backup)
{
    m_backup = backup;
    showBackup();
}

void ChannelPanel::setStandIn(const QString &standIn)
{
    if (standIn == m_standIn)
        return;
    m_standIn = standIn;
    showState();
}

void ChannelPanel::showBackupMenu()
{
    QMenu menu(this);
    menu.setAccessibleName(tr("Backup of channel %1").arg(m_channel + 1));
    menu.addAction(tr("No backup (the slate)"), this, [this] { emit backupChosen(QString()); });
    for (int c = 0; c < kChannelCount; ++c) {
        if (c != m_channel)
            menu.addAction(tr("Channel %1").arg(c + 1), this, [this, c] {
                emit backupChosen(QStringLiteral("channel:%1").arg(c + 1));
            });
    }
    menu.addAction(tr("File…"), this, [this] { emit chooseBackupRequested(true); });
    menu.addAction(tr("Address…"), this, [this] { emit chooseBackupRequested(false); });
    menu.exec(m_backupButton->mapToGlobal(QPoint(0, m_backupButton->height())));
}

void ChannelPanel::showBackup()
{
    const QString backup = m_backup.startsWith(QLatin1String("channel:"))
                               ? tr("channel %1").arg(m_backup.mid(8))
                           : m_backup.isEmpty() ? tr("slate")
                                                : QFileInfo(m_backup).fileName();
    m_backupButton->setText(tr("Backup: %1").arg(backup));
    m_backupButton->setToolTip(
        m_backup.isEmpty()
            ? tr("When channel %1 fails on air, the slate stands in").arg(m_channel + 1)
            : tr("When channel %1 fails on air, %2 stands in").arg(m_channel + 1).arg(m_backup));
}

QString ChannelPanel::standInText(const QString &standIn)
{
    if (standIn.startsWith(QLatin1String("channel ")))
        return tr("channel %1").arg(standIn.mid(8));
    return standIn == QLatin1String("backup") ? tr("its backup") : tr("the slate");
}

QString ChannelPanel::stateText() const
{
    if (!m_standIn.isEmpty())
        return tr("failed on air: %1 stands in").arg(standInText(m_standIn));
    switch (m_stats.state) {
    case ChannelState::Idle:
        return tr("idle");
    case ChannelState::Opening:
        return tr("connecting");
    case ChannelState::Playing:
        return m_stats.live ? tr("live") : tr("playing");
    case ChannelState::Paused:
        return tr("paused");
    case ChannelState::Ended:
        return tr("ended");
    case ChannelState::Failed:
        return m_error.isEmpty() ? tr("error") : tr("error: %1").arg(m_error);
    case ChannelState::Reconnecting:
        return m_error.isEmpty() ? tr("reconnecting") : tr("reconnecting: %1").arg(m_error);
    }
    return {};
}

void ChannelPanel::showState()
{
    static const char *const kColours[] = {"#9aa0aa", "#e6b84a", "#55c878", "#8fb3ff",
                                           "#9aa0aa", "#ff5a5a", "#e6b84a"};
    m_state->setText(stateText());
    // A channel stood in for shows in the warning colour whatever its decoder says.
    m_state->setStyleSheet(
        QStringLiteral("color:%1;")
            .arg(m_standIn.isEmpty() ? kColours[int(m_stats.state)] : "#ff9f1a"));
    m_state->setAccessibleName(tr("Channel %1 state").arg(m_channel + 1));
    m_state->setAccessibleDescription(m_state->text());
}

QString ChannelPanel::timeText(qint64 ms)
{
    const qint64 s = ms / 1000;
    return s >= 3600 ? QStringLiteral("%1:%2:%3")
                           .arg(s / 3600)
                           .arg(s / 60 % 60, 2, 10, QLatin1Char('0'))
                           .arg(s % 60, 2, 10, QLatin1Char('0'))
                     : QStringLiteral("%1:%2").arg(s / 60).arg(s % 60, 2, 10, QLatin1Char('0'));
}

void ChannelPanel::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::LanguageChange)
        retranslateUi();
    QFrame::changeEvent(event);
}

void ChannelPanel::retranslateUi()
{
    const int n = m_channel + 1;
    m_title->setText(m_onProgram ? tr("<b>%1</b>  PROGRAM").arg(n) : tr("<b>%1</b>").arg(n));
    m_choose->setText(tr("Source…"));
    m_choose->setToolTip(tr("Choose what channel %1 plays").arg(n));
    m_clear->setText(tr("Clear"));
    m_take->setText(tr("Take"));
    m_take->setToolTip(tr("Put channel %1 on the program (key %1)").arg(n));
    m_pause->setText(tr("Pause"));
    m_pause->setAccessibleName(tr("Pause channel %1").arg(n));
    m_loop->setText(tr("Loop"));
    m_loop->setAccessibleName(tr("Loop channel %1").arg(n));
    m_seek->setAccessibleName(tr("Channel %1 position").arg(n));
    m_time->setAccessibleName(tr("Channel %1 time").arg(n));
    m_source->setAccessibleName(tr("Channel %1 source").arg(n));
    m_thumbnail->setAccessibleName(tr("Channel %1 picture").arg(n));
    m_title->setAccessibleName(tr("Channel %1 title").arg(n));
    if (m_stats.source.isEmpty())
        m_source->setText(tr("(no source)"));
    showBackup();
    showState();
}

} // namespace selvane
