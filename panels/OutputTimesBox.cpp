#include "panels/OutputTimesBox.h"

#include <QComboBox>
#include <QDateTimeEdit>
#include <QEvent>
#include <QFormLayout>
#include <QLabel>

namespace selvane {

namespace {
// The choices' places in the combo boxes.
enum Choice
{
    ByHand,
    WithSchedule,
    AtTime,
};

QString countdownText(qint64 ms)
{
    const qint64 s = (ms + 999) / 1000;
    return QStringLiteral("%1:%2:%3")
        .arg(s / 3600)
        .arg(s / 60 % 60, 2, 10, QLatin1Char('0'))
        .arg(s % 60, 2, 10, QLatin1Char('0'));
}
} // namespace

OutputTimesBox::OutputTimesBox(QWidget *parent) : QGroupBox(parent)
{
    setAccessibleName("Output Times");
    m_startLabel = new QLabel(this);
    m_startKind = new QComboBox(this);
    m_startKind->setObjectName("outputStartKind");
    m_startKind->setAccessibleName("Outputs Start");
    m_startAt = new QDateTimeEdit(this);
    m_startAt->setObjectName("outputStartAt");
    m_startAt->setAccessibleName("Outputs Start Time");
    m_stopLabel = new QLabel(this);
    m_stopKind = new QComboBox(this);
    m_stopKind->setObjectName("outputStopKind");
    m_stopKind->setAccessibleName("Outputs Stop");
    m_stopAt = new QDateTimeEdit(this);
    m_stopAt->setObjectName("outputStopAt");
    m_stopAt->setAccessibleName("Outputs Stop Time");
    m_countdown = new QLabel(this);
    m_countdown->setAccessibleName("Output Times Countdown");
    for (QComboBox *kind : {m_startKind, m_stopKind})
        kind->addItems({QString(), QString(), QString()});
    for (QDateTimeEdit *at : {m_startAt, m_stopAt}) {
        at->setDisplayFormat(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
        at->setCalendarPopup(true);
    }
    // Each choice above its date-time: the output settings dock stays narrow.
    auto *form = new QFormLayout(this);
    form->addRow(m_startLabel, m_startKind);
    form->addRow(QString(), m_startAt);
    form->addRow(m_stopLabel, m_stopKind);
    form->addRow(QString(), m_stopAt);
    form->addRow(m_countdown);

    const auto edited = [this] {
        m_startAt->setEnabled(m_startKind->currentIndex() == AtTime);
        m_stopAt->setEnabled(m_stopKind->currentIndex() == AtTime);
        if (!m_showing)
            emit changed();
    };
    for (QComboBox *kind : {m_startKind, m_stopKind})
        connect(kind, &QComboBox::activated, this, edited);
    for (QDateTimeEdit *at : {m_startAt, m_stopAt})
        connect(at, &QDateTimeEdit::editingFinished, this, edited);
    show(OutputTimes{});
    retranslateUi();
}

OutputMoment OutputTimesBox::momentOf(const QComboBox *kind, const QDateTimeEdit *at,
                                      bool stop) const
{
    switch (kind->currentIndex()) {
    case WithSchedule:
        return stop ? OutputMoment{OutputMoment::Kind::ScheduleEnd, 0, {}}
                    : OutputMoment{OutputMoment::Kind::Schedule, 0, {}};
    case AtTime:
        return {OutputMoment::Kind::Clock, 0, at->dateTime()};
    default:
        return {};
    }
}

OutputTimes OutputTimesBox::times() const
{
    return {momentOf(m_startKind, m_startAt, false), momentOf(m_stopKind, m_stopAt, true)};
}

void OutputTimesBox::showMoment(QComboBox *kind, QDateTimeEdit *at, const OutputMoment &moment)
{
    switch (moment.kind) {
    case OutputMoment::Kind::ByHand:
        kind->setCurrentIndex(ByHand);
        break;
    case OutputMoment::Kind::Schedule:
    case OutputMoment::Kind::ScheduleEnd:
        kind->setCurrentIndex(WithSchedule);
        break;
    case OutputMoment::Kind::Clock:
        kind->setCurrentIndex(AtTime);
        break;
    }
    // A time to start from: the one set, or the next whole minute but one (an hour later for
    // the stop).
    const QDateTime now = QDateTime::currentDateTime();
    const qint64 ahead = 120 - now.time().second() + (at == m_stopAt ? 3600 : 0);
    at->setDateTime(moment.kind == OutputMoment::Kind::Clock ? moment.at : now.addSecs(ahead));
    at->setEnabled(moment.kind == OutputMoment::Kind::Clock);
}

void OutputTimesBox::show(const OutputTimes &times)
{
    m_showing = true;
    showMoment(m_startKind, m_startAt, times.start);
    showMoment(m_stopKind, m_stopAt, times.stop);
    m_showing = false;
}

void OutputTimesBox::showCountdown(qint64 startsInMs, qint64 stopsInMs)
{
    m_startsInMs = startsInMs;
    m_stopsInMs = stopsInMs;
    if (startsInMs >= 0)
        m_countdown->setText(tr("The outputs start in %1").arg(countdownText(startsInMs)));
    else if (stopsInMs >= 0)
        m_countdown->setText(tr("The outputs stop in %1").arg(countdownText(stopsInMs)));
    else
        m_countdown->setText(tr("Nothing due: the outputs start and stop by hand"));
}

void OutputTimesBox::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::LanguageChange)
        retranslateUi();
    QGroupBox::changeEvent(event);
}

void OutputTimesBox::retranslateUi()
{
    setTitle(tr("Start and Stop by Themselves"));
    m_startLabel->setText(tr("Start:"));
    m_stopLabel->setText(tr("Stop:"));
    m_startKind->setItemText(ByHand, tr("By hand"));
    m_startKind->setItemText(WithSchedule, tr("At the schedule's start"));
    m_startKind->setItemText(AtTime, tr("At"));
    m_stopKind->setItemText(ByHand, tr("By hand"));
    m_stopKind->setItemText(WithSchedule, tr("At the schedule's end"));
    m_stopKind->setItemText(AtTime, tr("At"));
    showCountdown(m_startsInMs, m_stopsInMs);
}

} // namespace selvane
