#include "panels/StreamTargetDialog.h"

#include "engine/Engine.h"
#include "engine/OutputRules.h"
#include "output/EncodeProfiles.h"
#include "panels/EncodeProfilesBox.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QFileInfo>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>

namespace selvane {

QString StreamTargetEntry::url() const
{
    const QString base = server.trimmed();
    if (key.trimmed().isEmpty())
        return base;
    return (base.endsWith('/') ? base : base + "/") + key.trimmed();
}

StreamTarget StreamTargetEntry::target() const
{
    // An HLS folder is a playlist on this machine, whatever its name says.
    StreamTarget t = isHlsFolder() ? StreamTarget(server.trimmed(), QStringLiteral("hls"))
                                   : OutputRules::parseStreamTarget(url());
    t.profile = profile;
    t.hlsSegmentSeconds = hlsSegmentSeconds;
    t.hlsWindow = hlsWindow;
    return t;
}

QString StreamTargetDialog::kindText(const QString &kind)
{
    if (kind == QLatin1String("HLS folder"))
        return tr("HLS folder");
    if (kind == QLatin1String("Custom"))
        return tr("Custom");
    return kind;
}

StreamTargetDialog::StreamTargetDialog(QWidget *parent, const StreamTargetEntry &entry,
                                       const QStringList &profiles)
    : QDialog(parent)
{
    setObjectName("streamTargetDialog");
    setWindowTitle(tr("Stream target"));
    m_kind = new QComboBox(this);
    for (const QString &kind : kinds())
        m_kind->addItem(kindText(kind), kind);
    m_kind->setCurrentIndex(qMax(0, kinds().indexOf(entry.kind)));
    m_kind->setAccessibleName(tr("Target kind"));
    m_serverLabel = new QLabel(this);
    m_server = new QLineEdit(entry.server, this);
    m_server->setAccessibleName(tr("Server URL"));
    m_server->setMinimumWidth(380);
    m_browse = new QPushButton(tr("Browse…"), this);
    m_browse->setAccessibleName("Choose Playlist");
    m_key = new QLineEdit(entry.key, this);
    m_key->setEchoMode(QLineEdit::Password);
    m_key->setAccessibleName(tr("Stream key"));
    m_reveal = new QPushButton(tr("Show"), this);
    m_reveal->setCheckable(true);
    m_reveal->setAccessibleName(tr("Show the stream key"));
    connect(m_reveal, &QPushButton::toggled, this, [this](bool shown) {
        m_key->setEchoMode(shown ? QLineEdit::Normal : QLineEdit::Password);
        m_reveal->setText(shown ? tr("Hide") : tr("Show"));
    });
    m_profile = new QComboBox(this);
    m_profile->setAccessibleName("Target Profile");
    EncodeProfilesBox::fillChoice(m_profile, profiles, entry.profile);
    m_segment = new QSpinBox(this);
    m_segment->setAccessibleName("HLS Segment Seconds");
    m_segment->setRange(1, 6);
    m_segment->setSuffix(tr(" s"));
    m_segment->setValue(qBound(1, entry.hlsSegmentSeconds, 6));
    m_window = new QSpinBox(this);
    m_window->setAccessibleName("HLS Window");
    m_window->setRange(2, 60);
    m_window->setSuffix(tr(" segments"));
    m_window->setValue(qBound(2, entry.hlsWindow, 60));
    m_enabled = new QCheckBox(tr("Use this target"), this);
    m_enabled->setChecked(entry.enabled);
    m_enabled->setAccessibleName(tr("Use this target"));
    m_error = new QLabel(this);
    m_error->setStyleSheet("color: #ff6b6b;");
    m_error->hide();

    auto *serverRow = new QHBoxLayout;
    serverRow->addWidget(m_server, 1);
    serverRow->addWidget(m_browse);
    auto *keyRow = new QHBoxLayout;
    keyRow->addWidget(m_key, 1);
    keyRow->addWidget(m_reveal);
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    buttons->button(QDialogButtonBox::Ok)->setText(tr("OK"));
    buttons->button(QDialogButtonBox::Ok)->setAccessibleName("OK");
    buttons->button(QDialogButtonBox::Cancel)->setText(tr("Cancel"));
    buttons->button(QDialogButtonBox::Cancel)->setAccessibleName("Cancel");
    m_form = new QFormLayout(this);
    m_form->addRow(tr("Kind:"), m_kind);
    m_form->addRow(m_serverLabel, serverRow);
    m_form->addRow(tr("Stream key:"), keyRow);
    m_form->addRow(tr("Segment length:"), m_segment);
    m_form->addRow(tr("Playlist holds:"), m_window);
    m_form->addRow(tr("Profile:"), m_profile);
    m_form->addRow(QString(), m_enabled);
    m_form->addRow(m_error);
    m_form->addRow(buttons);
    connect(buttons, &QDialogButtonBox::accepted, this, &StreamTargetDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &StreamTargetDialog::reject);
    connect(m_kind, &QComboBox::currentIndexChanged, this, &StreamTargetDialog::showKind);
    connect(m_browse, &QPushButton::clicked, this, &StreamTargetDialog::browsePlaylist);
    showKind();
}

void StreamTargetDialog::showKind()
{
    // An HLS folder is a playlist on this machine: no key, a segment length and a window.
    const bool hls = m_kind->currentData().toString() == QLatin1String("HLS folder");
    m_serverLabel->setText(hls ? tr("Playlist:") : tr("Server:"));
    m_server->setAccessibleName(hls ? QStringLiteral("Playlist Path") : tr("Server URL"));
    m_server->setPlaceholderText(hls ? QStringLiteral("/srv/www/live/index.m3u8")
                                     : QStringLiteral("rtmp://live.example.com/app"));
    m_browse->setVisible(hls);
    m_form->setRowVisible(2, !hls); // the stream key
    m_form->setRowVisible(m_segment, hls);
    m_form->setRowVisible(m_window, hls);
    m_error->hide();
}

void StreamTargetDialog::browsePlaylist()
{
    const QString path = QFileDialog::getSaveFileName(
        this, tr("HLS playlist"), m_server->text().trimmed(), tr("HLS playlists (*.m3u8)"), nullptr,
        QFileDialog::DontConfirmOverwrite);
    if (!path.isEmpty())
        m_server->setText(path.endsWith(".m3u8", Qt::CaseInsensitive) ? path : path + ".m3u8");
}

StreamTargetEntry StreamTargetDialog::entry() const
{
    StreamTargetEntry e;
    e.kind = m_kind->currentData().toString();
    e.enabled = m_enabled->isChecked();
    e.server = m_server->text().trimmed();
    e.key = e.isHlsFolder() ? QString() : m_key->text().trimmed();
    const QString profile = m_profile->currentData().toString();
    e.profile = profiles::isDefault(profile) ? QString() : profile;
    e.hlsSegmentSeconds = m_segment->value();
    e.hlsWindow = m_window->value();
    return e;
}

void StreamTargetDialog::accept()
{
    const StreamTargetEntry e = entry();
    OutputSettings check;
    StreamTarget target = e.target();
    target.profile.clear(); // the profiles are checked as the outputs start
    check.encoder.streamTargets << target;
    if (!e.server.isEmpty() && !OutputRules::check(check, {})) {
        QDialog::accept();
        return;
    }
    m_error->setText(e.isHlsFolder()
                         ? tr("Enter the path of the playlist on this machine, such as "
                              "/srv/www/live/index.m3u8.")
                         : tr("Enter a server URL such as rtmp://host/app or srt://host:port."));
    m_error->show();
}

} // namespace selvane
