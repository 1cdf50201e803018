#pragma once

// The Network Proxy dialog: the proxy mode (Automatic: what the system says; Manual: the HTTP
// and SOCKS proxy URLs typed here; Off), what automatic mode finds on this system (read-only),
// and a connection test to a host:port through the proxy as set in the dialog, with its result
// (the time taken, or the reason). OK keeps the settings through the Engine API; Cancel leaves
// them as they were. The SOCKS URL may carry user:password and is shown masked until revealed.
//
// GUI thread only; modal. The test runs on a pool thread and its result comes back to the GUI
// thread through a queued call (a result for a dialog that has gone is dropped). Emits nothing.

#include "engine/EngineTypes.h"

#include <QDialog>
#include <optional>

class QDialogButtonBox;
class QEvent;
class QFormLayout;
class QGroupBox;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;
class QRadioButton;

namespace selvane {

class ProxyDialog : public QDialog
{
    Q_OBJECT

public:
    explicit ProxyDialog(QWidget *parent = nullptr);

    // The settings as the dialog shows them.
    ProxyConfig config() const;

public slots:
    void accept() override;

protected:
    void changeEvent(QEvent *event) override;

private:
    void retranslateUi();
    void updateEnabled();
    void startTest();
    void showTestResult(const ProxyTestResult &result);
    QString resultText(const ProxyTestResult &result) const;
    QString foundText() const;

    ProxyStatus m_status;
    QGroupBox *m_modeBox = nullptr;
    QRadioButton *m_auto = nullptr;
    QRadioButton *m_manual = nullptr;
    QRadioButton *m_off = nullptr;
    QFormLayout *m_form = nullptr;
    QLabel *m_httpLabel = nullptr;
    QLabel *m_socksLabel = nullptr;
    QLabel *m_foundLabel = nullptr;
    QLabel *m_testLabel = nullptr;
    QLineEdit *m_http = nullptr;
    QLineEdit *m_socks = nullptr;
    QPushButton *m_reveal = nullptr;
    QPlainTextEdit *m_found = nullptr;
    QLineEdit *m_testTarget = nullptr;
    QPushButton *m_test = nullptr;
    QLabel *m_result = nullptr;
    QDialogButtonBox *m_buttons = nullptr;
    bool m_testing = false;
    std::optional<ProxyTestResult> m_lastResult;
    QString m_lastTarget;
};

} // namespace selvane
