#pragma once

// The failover settings beside the outputs: on or off, the slate (a picture or a clip, and its
// words) and the two times. The channels' backups are chosen on the channel panels. It holds
// the values the operator chose and shows the engine's; it decides nothing itself.
//
// GUI thread only. Emits changed() when the operator changes any value.

#include "engine/EngineTypes.h"

#include <QGroupBox>

class QCheckBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QSpinBox;

namespace selvane {

class FailoverBox : public QGroupBox
{
    Q_OBJECT

public:
    explicit FailoverBox(QWidget *parent = nullptr);

    // All but the backups, which `settings` keeps as they are.
    FailoverSettings settings(FailoverSettings settings) const;
    void show(const FailoverSettings &settings);

signals:
    void changed();

protected:
    void changeEvent(QEvent *event) override;

private:
    void retranslateUi();
    void chooseSlate();

    bool m_showing = false;
    QCheckBox *m_enabled = nullptr;
    QLabel *m_slateLabel = nullptr;
    QLineEdit *m_slate = nullptr;
    QPushButton *m_browse = nullptr;
    QLabel *m_textLabel = nullptr;
    QLineEdit *m_text = nullptr;
    QLabel *m_failoverLabel = nullptr;
    QSpinBox *m_failoverMs = nullptr;
    QLabel *m_returnLabel = nullptr;
    QSpinBox *m_returnMs = nullptr;
};

} // namespace selvane
