#include "panels/SourceDialog.h"

#include "engine/CaptureSources.h"
#include "engine/Engine.h"
#include "media/StoredSettings.h"

#include <QApplication>
#include <QButtonGroup>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPixmap>
#include <QPointer>
#include <QPushButton>
#include <QRadioButton>
#include <QSettings>
#include <QStackedWidget>
#include <QThreadPool>
#include <QTimer>
#include <QUrl>
#include <QUrlQuery>
#include <QVBoxLayout>

namespace selvane {

namespace {

// Named colours of the colour test signal, in the order of the list.
const QColor kColours[] = {QColor(255, 0, 0),     QColor(0, 255, 0), QColor(0, 0, 255),
                           QColor(255, 255, 255), QColor(0, 0, 0),   QColor(128, 128, 128)};
const char *const kMediaDirectoryKey = "source/lastMediaDirectory";
const QSize kPreviewSize(240, 135);

QString encodedGraph(const QString &graph)
{
    // Characters that would end or split the address are percent-encoded; the decoder reads
    // the graph back percent-decoded.
    return QString::fromLatin1(QUrl::toPercentEncoding(graph, "=:;[],.@/_-"));
}

} // namespace

QString SourceDialog::testSignalAddress(int preset, const QColor &colour)
{
    const QString tone = "sine=frequency=1000:sample_rate=48000";
    const QString silence = "anullsrc=r=48000:cl=stereo";
    QString graph;
    switch (preset) {
    case 0: // line-up: bars and a 1 kHz tone
        graph = "smptehdbars=size=1280x720:rate=30[out0];" + tone + "[out1]";
        break;
    case 1: // something that moves, to see dropped or repeated frames; silent
        graph = "testsrc2=size=1280x720:rate=30[out0];" + silence + "[out1]";
        break;
    default:
        graph =
            QStringLiteral("color=c=0x%1:size=1280x720:rate=30[out0];").arg(colour.name().mid(1)) +
            silence + "[out1]";
        break;
    }
    return "lavfi://" + encodedGraph(graph);
}

SourceDialog::SourceDialog(QWidget *parent, int channelNumber)
    : QDialog(parent), m_channelNumber(channelNumber)
{
    setObjectName("sourceDialog");
    setModal(true);
    setStyleSheet(
        "QDialog { background: #202020; color: white; }"
        "QLabel, QRadioButton { color: white; }"
        "QLineEdit { background: #2b2b2b; color: white; padding: 5px; border-radius: 4px; }"
        "QComboBox { background: #2b2b2b; color: white; padding: 5px; }"
        "QPushButton { background: #333; color: white; padding: 5px 10px; "
        "border-radius: 4px; }"
        "QPushButton:hover { background: #444; }");

    m_kindLabel = new QLabel(this);
    m_kinds = new QButtonGroup(this);
    auto *kindRow = new QHBoxLayout;
    // Fixed English names: automation scripts choose the kind by them.
    static const char *const kKindNames[KindCount] = {"Media file",  "Network stream",
                                                      "Test signal", "Camera and microphone",
                                                      "Display",     "Window"};
    for (int k = 0; k < KindCount; ++k) {
        m_kindButtons[k] = new QRadioButton(this);
        m_kindButtons[k]->setAccessibleName(QString::fromLatin1(kKindNames[k]));
        m_kinds->addButton(m_kindButtons[k], k);
        kindRow->addWidget(m_kindButtons[k]);
    }
    m_kindButtons[MediaFile]->setChecked(true);

    m_pages = new QStackedWidget(this);
    // Media file and network stream share the address line.
    auto *addressPage = new QWidget(m_pages);
    m_addressLabel = new QLabel(addressPage);
    m_address = new QLineEdit(addressPage);
    m_address->setAccessibleName("Source address");
    m_address->setMinimumWidth(420);
    m_browse = new QPushButton(addressPage);
    auto *addressRow = new QHBoxLayout(addressPage);
    addressRow->setContentsMargins(0, 0, 0, 0);
    addressRow->addWidget(m_addressLabel);
    addressRow->addWidget(m_address, 1);
    addressRow->addWidget(m_browse);

    auto *signalPage = new QWidget(m_pages);
    m_presetLabel = new QLabel(signalPage);
    m_preset = new QComboBox(signalPage);
    m_colourLabel = new QLabel(signalPage);
    m_colour = new QComboBox(signalPage);
    auto *signalForm = new QFormLayout(signalPage);
    signalForm->setContentsMargins(0, 0, 0, 0);
    signalForm->addRow(m_presetLabel, m_preset);
    signalForm->addRow(m_colourLabel, m_colour);

    auto *devicePage = new QWidget(m_pages);
    m_cameraLabel = new QLabel(devicePage);
    m_camera = new QComboBox(devicePage);
    m_microphoneLabel = new QLabel(devicePage);
    m_microphone = new QComboBox(devicePage);
    m_refresh = new QPushButton(devicePage);
    auto *deviceForm = new QFormLayout(devicePage);
    deviceForm->setContentsMargins(0, 0, 0, 0);
    deviceForm->addRow(m_cameraLabel, m_camera);
    deviceForm->addRow(m_microphoneLabel, m_microphone);
    deviceForm->addRow(QString(), m_refresh);

    // Display and window share one page: the list changes with the kind.
    auto *capturePage = new QWidget(m_pages);
    m_captureLabel = new QLabel(capturePage);
    m_capture = new QComboBox(capturePage);
    m_capture->setMinimumContentsLength(40);
    m_capture->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    m_captureRefresh = new QPushButton(capturePage);
    m_captureMicrophoneLabel = new QLabel(capturePage);
    m_captureMicrophone = new QComboBox(capturePage);
    m_captureNotice = new QLabel(capturePage);
    m_captureNotice->setObjectName("captureNotice");
    m_captureNotice->setStyleSheet("color: #ff9f43;");
    m_captureNotice->setWordWrap(true);
    auto *captureRow = new QHBoxLayout;
    captureRow->addWidget(m_capture, 1);
    captureRow->addWidget(m_captureRefresh);
    auto *captureForm = new QFormLayout(capturePage);
    captureForm->setContentsMargins(0, 0, 0, 0);
    captureForm->addRow(m_captureLabel, captureRow);
    captureForm->addRow(m_captureMicrophoneLabel, m_captureMicrophone);
    captureForm->addRow(m_captureNotice);
    m_capturePreview = new QLabel(capturePage);
    m_capturePreview->setObjectName("capturePreview");
    m_capturePreview->setFixedSize(kPreviewSize);
    m_capturePreview->setAlignment(Qt::AlignCenter);
    m_capturePreview->setStyleSheet("background: black;");
    captureForm->addRow(QString(), m_capturePreview);
    m_previewTimer = new QTimer(this);
    m_previewTimer->setInterval(1000);
    connect(m_previewTimer, &QTimer::timeout, this, &SourceDialog::requestCapturePreview);
    connect(m_capture, &QComboBox::currentIndexChanged, this, &SourceDialog::requestCapturePreview);

    m_pages->addWidget(addressPage);
    m_pages->addWidget(signalPage);
    m_pages->addWidget(devicePage);
    m_pages->addWidget(capturePage);

    m_error = new QLabel(this);
    m_error->setObjectName("sourceError");
    m_error->setStyleSheet("color: #ff6b6b;");
    m_error->setWordWrap(true);
    m_error->hide();

    auto *buttons = new QDialogButtonBox(this);
    m_ok = buttons->addButton(QString(), QDialogButtonBox::AcceptRole);
    m_cancel = buttons->addButton(QString(), QDialogButtonBox::RejectRole);
    m_ok->setAccessibleName("OK");
    m_cancel->setAccessibleName("Cancel");
    m_ok->setDefault(true);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_kindLabel);
    layout->addLayout(kindRow);
    layout->addWidget(m_pages);
    layout->addWidget(m_error);
    layout->addWidget(buttons);

    connect(m_kinds, &QButtonGroup::idToggled, this, [this](int, bool on) {
        if (on)
            showKind();
    });
    connect(m_preset, &QComboBox::currentIndexChanged, this, [this] { showKind(); });
    connect(m_browse, &QPushButton::clicked, this, &SourceDialog::browse);
    connect(m_refresh, &QPushButton::clicked, this, &SourceDialog::refreshDevices);
    connect(m_captureRefresh, &QPushButton::clicked, this, &SourceDialog::refreshCaptures);
    connect(buttons, &QDialogButtonBox::accepted, this, &SourceDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &SourceDialog::reject);

    retranslateUi();
    refreshDevices();
    showKind();
}

SourceDialog::Kind SourceDialog::kind() const
{
    const int id = m_kinds->checkedId();
    return id < 0 ? MediaFile : static_cast<Kind>(id);
}

void SourceDialog::showKind()
{
    const Kind k = kind();
    const bool capture = k == Display || k == Window;
    m_pages->setCurrentIndex(k == TestSignal ? 1 : k == CameraMicrophone ? 2 : capture ? 3 : 0);
    if (capture) {
        refreshCaptures();
        m_previewTimer->start();
    } else {
        m_previewTimer->stop();
    }
    m_browse->setVisible(k == MediaFile);
    m_address->setPlaceholderText(k == NetworkStream ? QStringLiteral("rtmp://  http://  rtsp:// …")
                                                     : tr("/path/to/clip.mp4"));
    const bool colour = m_preset->currentIndex() == 2;
    m_colour->setVisible(colour);
    m_colourLabel->setVisible(colour);
    m_error->hide();
}

void SourceDialog::setAddress(const QString &address)
{
    if (address.isEmpty())
        return;
    if (address.startsWith("lavfi://", Qt::CaseInsensitive)) {
        m_kindButtons[TestSignal]->setChecked(true);
    } else if (address.startsWith("desktop://", Qt::CaseInsensitive) ||
               address.startsWith("wgc://", Qt::CaseInsensitive)) {
        m_kindButtons[address.startsWith("wgc://", Qt::CaseInsensitive) ? Window : Display]
            ->setChecked(true);
        showKind();
        m_capture->setCurrentIndex(qMax(0, m_capture->findData(address)));
    } else if (address.startsWith("dshow://", Qt::CaseInsensitive)) {
        m_kindButtons[CameraMicrophone]->setChecked(true);
        const QString video = QUrlQuery(QUrl(address)).queryItemValue("video", QUrl::FullyDecoded);
        const int row = m_camera->findText(video);
        if (row >= 0)
            m_camera->setCurrentIndex(row);
    } else {
        m_kindButtons[address.contains("://") ? NetworkStream : MediaFile]->setChecked(true);
        m_address->setText(address);
    }
    showKind();
}

void SourceDialog::browse()
{
    StoredSettings settings;
    const QString start = settings.value(kMediaDirectoryKey).toString();
    const QString path = QFileDialog::getOpenFileName(
        this, tr("Select media file"), start,
        tr("Media (*.mp4 *.mov *.mkv *.avi *.mp3 *.wav);;All files (*)"));
    if (path.isEmpty())
        return;
    settings.setValue(kMediaDirectoryKey, QFileInfo(path).absolutePath());
    m_address->setText(path);
}

void SourceDialog::refreshDevices()
{
    const QString camera = m_camera->currentData().toString();
    const QString microphone = m_microphone->currentData().toString();
    m_camera->clear();
    for (const CaptureDevice &device : CaptureSources::cameras())
        m_camera->addItem(device.name, device.name);
    if (m_camera->count() == 0)
        m_camera->addItem(tr("(No camera found)"), QString());
    const QString captureMicrophone = m_captureMicrophone->currentData().toString();
    m_microphone->clear();
    m_captureMicrophone->clear();
    for (QComboBox *list : {m_microphone, m_captureMicrophone})
        list->addItem(tr("(No microphone)"), QString());
    for (const CaptureDevice &device : CaptureSources::microphones()) {
        m_microphone->addItem(device.name, device.name);
        m_captureMicrophone->addItem(device.name, device.name);
    }
    m_captureMicrophone->setCurrentIndex(qMax(0, m_captureMicrophone->findData(captureMicrophone)));
    m_camera->setCurrentIndex(qMax(0, m_camera->findData(camera)));
    m_microphone->setCurrentIndex(qMax(0, m_microphone->findData(microphone)));
}

void SourceDialog::refreshCaptures()
{
    const bool windows = kind() == Window;
    const QString chosen = m_capture->currentData().toString();
    m_capture->clear();
    const bool display = CaptureSources::hasCaptureDisplay();
    m_captureNotice->setVisible(!display);
    m_captureNotice->setText(
        tr("This session has no X11 display, so nothing can be captured (on Wayland, run "
           "Selvane under XWayland)."));
    for (const CaptureTarget &target :
         windows ? CaptureSources::windows() : CaptureSources::displays()) {
        const QString label = windows ? target.label
                                      : tr("Display %1: %2, %3×%4 at %5,%6")
                                            .arg(target.address.section('=', -1).toInt() + 1)
                                            .arg(target.name)
                                            .arg(target.geometry.width())
                                            .arg(target.geometry.height())
                                            .arg(target.geometry.x())
                                            .arg(target.geometry.y());
        m_capture->addItem(label, target.address);
    }
    if (m_capture->count() == 0)
        m_capture->addItem(
            windows ? tr("(No windows — click Refresh)") : tr("(No display detected)"), QString());
    m_capture->setCurrentIndex(qMax(0, m_capture->findData(chosen)));
    m_captureLabel->setText(windows ? tr("Window:") : tr("Display:"));
    m_captureRefresh->setText(windows ? tr("Refresh windows") : tr("Refresh displays"));
    m_captureRefresh->setAccessibleName(m_captureRefresh->text());
    m_capture->setAccessibleName(windows ? tr("Window") : tr("Display"));
}

void SourceDialog::requestCapturePreview()
{
    const QString address = m_capture->currentData().toString();
    if (address.isEmpty()) {
        m_capturePreview->clear();
        return;
    }
    if (m_previewPending)
        return;
    m_previewPending = true;
    QPointer<SourceDialog> self(this);
    QThreadPool::globalInstance()->start([self, address] {
        const QImage still = CaptureSources::captureStill(address, kPreviewSize);
        QMetaObject::invokeMethod(qApp, [self, address, still] {
            if (!self)
                return;
            self->m_previewPending = false;
            if (self->m_capture->currentData().toString() == address)
                self->m_capturePreview->setPixmap(QPixmap::fromImage(still));
        });
    });
}

void SourceDialog::accept()
{
    SourceChoice choice;
    switch (kind()) {
    case MediaFile:
    case NetworkStream:
        choice.address = m_address->text().trimmed();
        break;
    case TestSignal:
        choice.address = testSignalAddress(m_preset->currentIndex(),
                                           kColours[qBound(0, m_colour->currentIndex(), 5)]);
        break;
    case CameraMicrophone: {
        const QString camera = m_camera->currentData().toString();
        if (camera.isEmpty()) {
            m_error->setText(tr("No camera is available; connect one and press Refresh."));
            m_error->show();
            return;
        }
        // The device name is percent-encoded whole: spaces, colons and non-ASCII letters
        // come back as they were.
        choice.address =
            "dshow://capture?video=" + QString::fromLatin1(QUrl::toPercentEncoding(camera));
        const QString microphone = m_microphone->currentData().toString();
        if (!microphone.isEmpty())
            choice.audioSource =
                "dshow://capture?audio=" + QString::fromLatin1(QUrl::toPercentEncoding(microphone));
        break;
    }
    case Display:
    case Window:
        choice.address = m_capture->currentData().toString();
        if (choice.address.isEmpty()) {
            m_error->setText(kind() == Window
                                 ? tr("No window to capture; open it and press Refresh.")
                                 : tr("No display to capture."));
            m_error->show();
            return;
        }
        if (const QString microphone = m_captureMicrophone->currentData().toString();
            !microphone.isEmpty())
            choice.audioSource =
                "dshow://capture?audio=" + QString::fromLatin1(QUrl::toPercentEncoding(microphone));
        break;
    case KindCount:
        break;
    }
    if (const Problem problem = CaptureSources::checkAddress(choice.address)) {
        m_error->setText(problemText(problem));
        m_error->show();
        return;
    }
    m_choice = choice;
    QDialog::accept();
}

void SourceDialog::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::LanguageChange)
        retranslateUi();
    QDialog::changeEvent(event);
}

void SourceDialog::retranslateUi()
{
    setWindowTitle(tr("Select source - Channel %1").arg(m_channelNumber));
    m_kindLabel->setText(tr("Source type:"));
    m_kindButtons[MediaFile]->setText(tr("Local file"));
    m_kindButtons[NetworkStream]->setText(tr("URL / network stream"));
    m_kindButtons[TestSignal]->setText(tr("Test signal"));
    m_kindButtons[CameraMicrophone]->setText(tr("Camera / microphone"));
    m_kindButtons[Display]->setText(tr("Display"));
    m_kindButtons[Window]->setText(tr("Window"));
    m_captureMicrophoneLabel->setText(tr("Microphone:"));
    m_captureMicrophone->setAccessibleName(tr("Microphone"));
    if (kind() == Display || kind() == Window)
        refreshCaptures();
    m_addressLabel->setText(tr("Address:"));
    m_browse->setText(tr("Browse…"));
    m_browse->setAccessibleName(tr("Browse for a media file"));
    m_presetLabel->setText(tr("Signal:"));
    const int preset = qMax(0, m_preset->currentIndex());
    m_preset->clear();
    m_preset->addItems({tr("Bars and tone"), tr("Moving pattern"), tr("Colour")});
    m_preset->setCurrentIndex(preset);
    m_preset->setAccessibleName(tr("Test signal preset"));
    m_colourLabel->setText(tr("Colour:"));
    const int colour = qMax(0, m_colour->currentIndex());
    m_colour->clear();
    m_colour->addItems({tr("Red"), tr("Green"), tr("Blue"), tr("White"), tr("Black"), tr("Grey")});
    m_colour->setCurrentIndex(colour);
    m_colour->setAccessibleName(tr("Test signal colour"));
    m_cameraLabel->setText(tr("Camera:"));
    m_camera->setAccessibleName(tr("Camera"));
    m_microphoneLabel->setText(tr("Microphone:"));
    m_microphone->setAccessibleName(tr("Microphone"));
    m_refresh->setText(tr("Refresh devices"));
    m_refresh->setAccessibleName(tr("Refresh devices"));
    m_ok->setText(tr("OK"));
    m_cancel->setText(tr("Cancel"));
    for (QComboBox *list : {m_microphone, m_captureMicrophone})
        if (list->count() > 0)
            list->setItemText(0, tr("(No microphone)"));
}

} // namespace selvane
