#pragma once

// Adds or edits one stream target: its kind, the server URL, the stream key (hidden until the
// operator reveals it) and whether it is used. GUI thread only; modal.

#include <QDialog>
#include <QString>

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;

namespace selvane {

// One stream target as the operator set it.
struct StreamTargetEntry
{
    QString kind; // "RTMP", "RTMPS", "SRT", "HLS/HTTP", "Custom"
    bool enabled = true;
    QString server;
    QString key;
    // The server with the key as the last path element (when there is a key).
    QString url() const;
};

class StreamTargetDialog : public QDialog
{
    Q_OBJECT

public:
    StreamTargetDialog(QWidget *parent, const StreamTargetEntry &entry);
    StreamTargetEntry entry() const;

    static QStringList kinds() { return {"RTMP", "RTMPS", "SRT", "HLS/HTTP", "Custom"}; }

public slots:
    void accept() override;

private:
    QComboBox *m_kind = nullptr;
    QLineEdit *m_server = nullptr;
    QLineEdit *m_key = nullptr;
    QPushButton *m_reveal = nullptr;
    QCheckBox *m_enabled = nullptr;
    QLabel *m_error = nullptr;
};

} // namespace selvane
