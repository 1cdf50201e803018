#pragma once

// When the outputs start and stop by themselves, beside the output settings: for each of the
// start and the stop, by hand, with the schedule (its start, its end), or at a date-time; and
// how long until the next one comes. It holds what the operator chose and shows the engine's
// times and countdown; it decides nothing itself.
//
// GUI thread only. Emits changed() when the operator changes a time.

#include "engine/EngineTypes.h"

#include <QGroupBox>

class QComboBox;
class QDateTimeEdit;
class QLabel;

namespace selvane {

class OutputTimesBox : public QGroupBox
{
    Q_OBJECT

public:
    explicit OutputTimesBox(QWidget *parent = nullptr);

    OutputTimes times() const;
    void show(const OutputTimes &times);
    // How long until the outputs start or stop by themselves (-1: nothing is due).
    void showCountdown(qint64 startsInMs, qint64 stopsInMs);

signals:
    void changed();

protected:
    void changeEvent(QEvent *event) override;

private:
    void retranslateUi();
    void showMoment(QComboBox *kind, QDateTimeEdit *at, const OutputMoment &moment);
    OutputMoment momentOf(const QComboBox *kind, const QDateTimeEdit *at, bool stop) const;

    bool m_showing = false;
    QLabel *m_startLabel = nullptr;
    QComboBox *m_startKind = nullptr;
    QDateTimeEdit *m_startAt = nullptr;
    QLabel *m_stopLabel = nullptr;
    QComboBox *m_stopKind = nullptr;
    QDateTimeEdit *m_stopAt = nullptr;
    QLabel *m_countdown = nullptr;
    qint64 m_startsInMs = -1;
    qint64 m_stopsInMs = -1;
};

} // namespace selvane
