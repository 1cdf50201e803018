#include "app/OutputTimesDesk.h"

#include "engine/Engine.h"
#include "engine/OutputMomentText.h"
#include "media/StoredSettings.h"
#include "panels/OutputTimesBox.h"

#include <QDebug>
#include <QMessageBox>
#include <QTimer>

namespace selvane {

OutputTimesDesk::OutputTimesDesk(Engine &engine, OutputTimesBox *box, QWidget *window)
    : QObject(window), m_engine(engine), m_box(box), m_window(window)
{
    const OutputTimes kept = stored();
    if (const Problem problem = engine.setOutputTimes(kept)) {
        qInfo().noquote() << "Output times not used:"
                          << problemText(problem, ProblemLanguage::English);
        store(engine.outputTimes());
    }
    m_shown = engine.outputTimes();
    m_box->show(m_shown);
    connect(m_box, &OutputTimesBox::changed, this, [this] { apply(m_box->times()); });
    auto *countdown = new QTimer(this);
    connect(countdown, &QTimer::timeout, this, [this] {
        // Times set elsewhere (the command line, the remote control) are shown too.
        if (m_engine.outputTimes() != m_shown) {
            m_shown = m_engine.outputTimes();
            m_box->show(m_shown);
        }
        const OutputStats output = m_engine.stats().output;
        m_box->showCountdown(output.startsInMs, output.stopsInMs);
    });
    countdown->start(1000);
}

void OutputTimesDesk::apply(const OutputTimes &times)
{
    // The box's field loses its focus to the message box, which says it was edited again.
    if (m_applying || times == m_engine.outputTimes())
        return;
    m_applying = true;
    if (const Problem problem = m_engine.setOutputTimes(times))
        QMessageBox::warning(m_window, tr("Output Times"), problemText(problem));
    else
        store(times);
    m_applying = false;
    m_shown = m_engine.outputTimes();
    m_box->show(m_shown);
    const OutputStats output = m_engine.stats().output;
    m_box->showCountdown(output.startsInMs, output.stopsInMs);
}

OutputTimes OutputTimesDesk::stored()
{
    StoredSettings s;
    const QDateTime now = QDateTime::currentDateTime();
    OutputTimes times;
    times.start =
        readOutputMoment(s.value("output/startAt").toString(), false, now).value_or(OutputMoment{});
    times.stop =
        readOutputMoment(s.value("output/stopAt").toString(), true, now).value_or(OutputMoment{});
    return times;
}

void OutputTimesDesk::store(const OutputTimes &times)
{
    StoredSettings s;
    s.setValue("output/startAt", outputMomentText(times.start));
    s.setValue("output/stopAt", outputMomentText(times.stop));
}

} // namespace selvane
