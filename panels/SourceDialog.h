#pragma once

// The dialog in which the operator chooses what a channel plays: a media file, a network
// stream, a test signal (bars and tone, a moving pattern, a colour), a camera, a whole display
// or one window, the last three with an optional microphone. It returns a source address and
// the separate microphone address; what it accepts has been checked (the engine's address
// check). Lists are filled when the dialog opens and by their Refresh buttons; the chosen
// display or window shows in a small picture, grabbed once a second on the thread pool. GUI
// thread only; modal.

#include <QDialog>

class QButtonGroup;
class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QRadioButton;
class QStackedWidget;
class QTimer;

namespace selvane {

struct SourceChoice
{
    QString address;
    QString audioSource; // "dshow://capture?audio=NAME", empty for none
};

class SourceDialog : public QDialog
{
    Q_OBJECT

public:
    enum Kind
    {
        MediaFile,
        NetworkStream,
        TestSignal,
        CameraMicrophone,
        Display,
        Window,
        KindCount
    };

    SourceDialog(QWidget *parent, int channelNumber);

    SourceChoice choice() const { return m_choice; }
    // Preselects the kind and fills the fields from the channel's current source.
    void setAddress(const QString &address);
    Kind kind() const;

    // The address of a test signal preset (0 bars and tone, 1 moving pattern, 2 a colour).
    static QString testSignalAddress(int preset, const QColor &colour);

public slots:
    void accept() override;

protected:
    void changeEvent(QEvent *event) override;

private:
    void retranslateUi();
    void showKind();
    void browse();
    void refreshDevices();
    void refreshCaptures();
    // Asks for a picture of the chosen display or window, off the window thread.
    void requestCapturePreview();

    int m_channelNumber = 1;
    SourceChoice m_choice;
    QButtonGroup *m_kinds = nullptr;
    QRadioButton *m_kindButtons[KindCount] = {};
    QLabel *m_kindLabel = nullptr;
    QStackedWidget *m_pages = nullptr;
    QLabel *m_addressLabel = nullptr;
    QLineEdit *m_address = nullptr;
    QPushButton *m_browse = nullptr;
    QLabel *m_presetLabel = nullptr;
    QComboBox *m_preset = nullptr;
    QLabel *m_colourLabel = nullptr;
    QComboBox *m_colour = nullptr;
    QLabel *m_cameraLabel = nullptr;
    QComboBox *m_camera = nullptr;
    QLabel *m_microphoneLabel = nullptr;
    QComboBox *m_microphone = nullptr;
    QLabel *m_captureLabel = nullptr;
    QComboBox *m_capture = nullptr;
    QPushButton *m_captureRefresh = nullptr;
    QLabel *m_captureMicrophoneLabel = nullptr;
    QComboBox *m_captureMicrophone = nullptr;
    QLabel *m_captureNotice = nullptr;
    QLabel *m_capturePreview = nullptr;
    QTimer *m_previewTimer = nullptr;
    bool m_previewPending = false;
    QPushButton *m_refresh = nullptr;
    QLabel *m_error = nullptr;
    QPushButton *m_ok = nullptr;
    QPushButton *m_cancel = nullptr;
};

} // namespace selvane
