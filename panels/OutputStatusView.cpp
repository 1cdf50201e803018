#include "panels/OutputStatusView.h"

#include <QEvent>
#include <QFileInfo>
#include <QLabel>
#include <QVBoxLayout>

namespace selvane {

namespace {

QString elapsedText(qint64 ms)
{
    const qint64 s = ms / 1000;
    return QStringLiteral("%1:%2:%3")
        .arg(s / 3600, 2, 10, QLatin1Char('0'))
        .arg(s / 60 % 60, 2, 10, QLatin1Char('0'))
        .arg(s % 60, 2, 10, QLatin1Char('0'));
}

QString bytesText(qint64 bytes)
{
    if (bytes >= (qint64(1) << 30))
        return QStringLiteral("%1 GB").arg(bytes / double(qint64(1) << 30), 0, 'f', 2);
    return QStringLiteral("%1 MB").arg(bytes / double(1 << 20), 0, 'f', 1);
}

} // namespace

OutputStatusView::OutputStatusView(QWidget *parent) : QWidget(parent)
{
    m_label = new QLabel(this);
    m_label->setObjectName("outputStatusText");
    m_label->setTextFormat(Qt::RichText);
    m_label->setAlignment(Qt::AlignTop | Qt::AlignLeft);
    m_label->setWordWrap(true);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_label);
    showStats({}, {}, 0);
}

QString OutputStatusView::statusWord(const QString &status)
{
    if (status == "connecting")
        return tr("connecting");
    if (status == "online")
        return tr("online");
    if (status == "congested")
        return tr("congested");
    if (status == "reconnecting")
        return tr("reconnecting");
    if (status == "stopped")
        return tr("stopped");
    return status;
}

QString OutputStatusView::statusColour(const QString &status)
{
    if (status == "online")
        return "#55c878";
    if (status == "congested")
        return "#ff9f43";
    if (status == "reconnecting")
        return "#e6b84a";
    return "#9aa0aa";
}

QString OutputStatusView::text() const
{
    return m_label->text();
}

QString OutputStatusView::bitrateText(qint64 nowKbps, qint64 setKbps)
{
    const auto grouped = [](qint64 value) {
        QString digits = QString::number(value);
        for (qsizetype at = digits.size() - 3; at > 0 && digits[at - 1].isDigit(); at -= 3)
            digits.insert(at, QChar(0x00A0));
        return digits;
    };
    return tr("%1 / %2 kbit/s").arg(grouped(nowKbps), grouped(setKbps));
}

QString OutputStatusView::diskText(const RecordingStats &file)
{
    // Amber at ten minutes left, red at two: the operator has time to act.
    const char *colour = file.diskWarning >= 2 ? "#ff5a5a" : file.diskWarning == 1 ? "#ff9f1a" : "";
    const qint64 left = file.secondsLeft;
    const QString time = left < 600     ? tr("%1 s").arg(left)
                         : left < 36000 ? tr("%1 min").arg(left / 60)
                                        : tr("%1 h").arg(left / 3600);
    const QString text =
        tr("Disk: %1 left at this bitrate  ·  %2 free").arg(time, bytesText(file.freeBytes));
    return *colour ? QStringLiteral("<span style='color:%1'>%2</span>").arg(colour, text) : text;
}

void OutputStatusView::showStats(const OutputStats &stats, QSize programSize, double fps)
{
    m_stats = stats;
    m_size = programSize;
    m_fps = fps;
    QStringList lines;
    if (!stats.running) {
        lines << tr("Outputs are stopped.");
    } else {
        lines << tr("<b>On air</b> %1  ·  %2x%3 @ %4 fps  ·  %5 kbit/s")
                     .arg(elapsedText(stats.elapsedMs))
                     .arg(programSize.width())
                     .arg(programSize.height())
                     .arg(fps, 0, 'g', 3)
                     .arg(qRound(stats.kbps));
        lines << tr("Encoder: %1  ·  frames %2  ·  dropped %3")
                     .arg(stats.encoder.toHtmlEscaped())
                     .arg(stats.framesWritten)
                     .arg(stats.encoderDrops);
        if (stats.recording) {
            for (const auto &[file, twin] :
                 {std::pair{&stats.file, false}, std::pair{&stats.twin, true}}) {
                if (twin && !stats.twinRecording)
                    continue;
                const QString name = QFileInfo(file->path).fileName().toHtmlEscaped();
                if (file->failed)
                    lines << (twin ? tr("<span style='color:#ff5a5a'>Twin failed: %1</span> (%2)")
                                   : tr("<span style='color:#ff5a5a'>Recording failed: %1</span> "
                                        "(%2)"))
                                 .arg(file->failureReason.toHtmlEscaped(), name);
                else
                    lines << (twin ? tr("Twin %1  ·  %2") : tr("Recording %1  ·  %2"))
                                 .arg(name, bytesText(file->bytes));
                if (file->secondsLeft >= 0)
                    lines << diskText(*file);
            }
        }
        for (const EncodeStats &e : stats.encodes) {
            // "program", "multiview" or "channel N" in the operator's words.
            QString source = e.source;
            if (e.source == QLatin1String("program"))
                source = tr("program");
            else if (e.source == QLatin1String("multiview"))
                source = tr("multiview");
            else if (e.source.startsWith(QLatin1String("channel ")))
                source = tr("channel %1").arg(e.source.section(' ', 1));
            QString line = tr("Encode %1 (%2)  %3x%4 @ %5 fps  ·  %6")
                               .arg(e.profile.toHtmlEscaped(), source.toHtmlEscaped())
                               .arg(e.size.width())
                               .arg(e.size.height())
                               .arg(e.fps, 0, 'g', 3)
                               .arg(bitrateText(e.currentKbps, e.setKbps));
            if (e.failed)
                line = QStringLiteral("<span style='color:#ff5a5a'>%1  ·  %2</span>")
                           .arg(line, tr("failed"));
            else if (e.adaptive && e.currentKbps < e.setKbps)
                line = QStringLiteral("<span style='color:#ff9f43'>%1  ·  %2</span>")
                           .arg(line, tr("stepped down"));
            else if (e.adaptive)
                line += QStringLiteral("  ·  ") + tr("adaptive");
            lines << line;
        }
        for (const IsoStats &iso : stats.isoRecordings) {
            const QString name = QFileInfo(iso.file.path).fileName().toHtmlEscaped();
            if (iso.file.failed)
                lines << tr("<span style='color:#ff5a5a'>Channel %1 on its own failed: %2</span> "
                            "(%3)")
                             .arg(iso.channel)
                             .arg(iso.file.failureReason.toHtmlEscaped(), name);
            else
                lines << tr("Channel %1 on its own %2  ·  %3")
                             .arg(iso.channel)
                             .arg(name, bytesText(iso.file.bytes));
        }
        for (int i = 0; i < stats.targets.size(); ++i) {
            const TargetStats &t = stats.targets[i];
            QString line =
                QStringLiteral("<span style='color:%1'>●</span> %2  %3  ·  %4 kbit/s")
                    .arg(statusColour(t.status), t.url.toHtmlEscaped(), statusWord(t.status))
                    .arg(qRound(t.kbps));
            if (!t.profile.isEmpty() && t.profile != QLatin1String("default"))
                line += QStringLiteral("  ·  ") + t.profile.toHtmlEscaped();
            lines << line;
        }
    }
    const QString text = lines.join("<br>");
    if (text != m_label->text())
        m_label->setText(text);
    m_label->setAccessibleName(tr("Output status"));
}

void OutputStatusView::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::LanguageChange)
        showStats(m_stats, m_size, m_fps);
    QWidget::changeEvent(event);
}

} // namespace selvane
