#include "panels/StatusPanel.h"

#include "panels/OutputStatusView.h"

#include <QDateTime>
#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>

#ifdef _WIN32
#include <windows.h>
#else
#include <sys/resource.h>
#endif

namespace selvane {

namespace {

// The CPU time this process has used, user and system, in microseconds; -1 when unknown.
qint64 processCpuUs()
{
#ifdef _WIN32
    FILETIME created, exited, kernel, user;
    if (!GetProcessTimes(GetCurrentProcess(), &created, &exited, &kernel, &user))
        return -1;
    const auto us = [](const FILETIME &t) {
        return ((qint64(t.dwHighDateTime) << 32) | t.dwLowDateTime) / 10; // 100 ns -> us
    };
    return us(kernel) + us(user);
#else
    rusage usage{};
    if (getrusage(RUSAGE_SELF, &usage) != 0)
        return -1;
    return (qint64(usage.ru_utime.tv_sec) + usage.ru_stime.tv_sec) * 1000000 +
           usage.ru_utime.tv_usec + usage.ru_stime.tv_usec;
#endif
}

} // namespace

StatusPanel::StatusPanel(QWidget *parent) : QWidget(parent)
{
    setObjectName("statusPanel");
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(12);
    m_chips = new QWidget(this);
    m_chips->setObjectName("targetChips");
    auto *chipLayout = new QHBoxLayout(m_chips);
    chipLayout->setContentsMargins(0, 0, 0, 0);
    chipLayout->setSpacing(4);
    layout->addWidget(m_chips);
    const auto makeLabel = [this, layout](const char *name) {
        auto *label = new QLabel(this);
        label->setObjectName(name);
        layout->addWidget(label);
        return label;
    };
    m_fps = makeLabel("statusFps");
    m_drops = makeLabel("statusDrops");
    m_cpu = makeLabel("statusCpu");
    m_bitrate = makeLabel("statusBitrate");
    retranslateUi();
}

void StatusPanel::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::LanguageChange)
        retranslateUi();
    QWidget::changeEvent(event);
}

void StatusPanel::retranslateUi()
{
    m_fps->setAccessibleName(tr("Program frame rate"));
    m_drops->setAccessibleName(tr("Dropped frames"));
    m_cpu->setAccessibleName(tr("CPU use"));
    m_bitrate->setAccessibleName(tr("Output bitrate"));
    m_chips->setAccessibleName(tr("Stream target status"));
}

void StatusPanel::showStats(const EngineStats &stats)
{
    const qint64 cpuUs = processCpuUs();
    const qint64 atMs = QDateTime::currentMSecsSinceEpoch();
    if (cpuUs >= 0 && m_lastCpuUs >= 0 && atMs > m_lastCpuAtMs)
        m_cpuPercent = (cpuUs - m_lastCpuUs) / 10.0 / double(atMs - m_lastCpuAtMs);
    m_lastCpuUs = cpuUs;
    m_lastCpuAtMs = atMs;

    qint64 decoderDrops = 0;
    for (const ChannelStats &channel : stats.channels)
        decoderDrops += channel.framesDropped;
    m_fps->setText(tr("%1 fps").arg(stats.program.fps, 0, 'f', 1));
    m_drops->setText(
        tr("dropped: decoders %1, encoder %2").arg(decoderDrops).arg(stats.output.encoderDrops));
    m_cpu->setText(cpuUs >= 0 ? tr("CPU %1 %").arg(qRound(m_cpuPercent)) : tr("CPU –"));
    m_bitrate->setText(stats.output.running ? tr("%1 kbit/s").arg(qRound(stats.output.kbps))
                                            : tr("outputs off"));

    const QList<TargetStats> &targets = stats.output.targets;
    while (m_chipLabels.size() < targets.size()) {
        auto *chip = new QLabel(m_chips);
        chip->setObjectName("statusChip");
        m_chips->layout()->addWidget(chip);
        m_chipLabels << chip;
    }
    for (qsizetype i = 0; i < m_chipLabels.size(); ++i) {
        QLabel *chip = m_chipLabels[i];
        chip->setVisible(i < targets.size());
        if (i >= targets.size())
            continue;
        const QString word = OutputStatusView::statusWord(targets[i].status);
        chip->setText(QStringLiteral("<span style='color:%1'>●</span> %2 %3")
                          .arg(OutputStatusView::statusColour(targets[i].status))
                          .arg(i + 1)
                          .arg(word));
        chip->setToolTip(targets[i].url);
        chip->setAccessibleName(tr("Target %1: %2").arg(i + 1).arg(word));
    }
}

} // namespace selvane
