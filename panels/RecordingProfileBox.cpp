#include "panels/RecordingProfileBox.h"

#include "media/StoredSettings.h"
#include "panels/EncodeProfilesBox.h"

#include <QCheckBox>
#include <QComboBox>
#include <QEvent>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>

namespace selvane {

RecordingProfileBox::RecordingProfileBox(QWidget *parent) : QWidget(parent)
{
    setObjectName("recordingProfileBox");
    m_fileLabel = new QLabel(this);
    m_fileProfile = new QComboBox(this);
    m_fileProfile->setAccessibleName("Recording Profile");
    m_isoLabel = new QLabel(this);
    auto *isoRow = new QHBoxLayout;
    for (std::size_t c = 0; c < m_iso.size(); ++c) {
        m_iso[c] = new QCheckBox(QString::number(c + 1), this);
        m_iso[c]->setAccessibleName(QStringLiteral("Record Channel %1 On Its Own").arg(c + 1));
        isoRow->addWidget(m_iso[c]);
    }
    isoRow->addStretch(1);
    m_isoProfileLabel = new QLabel(this);
    m_isoProfile = new QComboBox(this);
    m_isoProfile->setAccessibleName("Channel Recordings Profile");
    for (QComboBox *box : {m_fileProfile, m_isoProfile}) {
        box->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
        box->setMinimumContentsLength(6);
    }
    m_hint = new QLabel(this);
    m_hint->setWordWrap(true);
    m_hint->setStyleSheet("color:#9aa0aa;font-size:11px;");

    auto *form = new QFormLayout(this);
    form->setContentsMargins(0, 0, 0, 0);
    form->addRow(m_fileLabel, m_fileProfile);
    form->addRow(m_isoLabel, isoRow);
    form->addRow(m_isoProfileLabel, m_isoProfile);
    form->addRow(m_hint);

    StoredSettings s;
    for (std::size_t c = 0; c < m_iso.size(); ++c)
        m_iso[c]->setChecked(s.value(QStringLiteral("output/iso/%1").arg(c + 1), false).toBool());
    EncodeProfilesBox::fillChoice(m_fileProfile, {}, s.value("output/fileProfile").toString());
    EncodeProfilesBox::fillChoice(m_isoProfile, {}, s.value("output/isoProfile").toString());
    retranslateUi();

    const auto edited = [this] {
        save();
        emit changed();
    };
    for (QCheckBox *box : m_iso)
        connect(box, &QCheckBox::toggled, this, edited);
    for (QComboBox *box : {m_fileProfile, m_isoProfile})
        connect(box, &QComboBox::activated, this, edited);
}

void RecordingProfileBox::setProfileNames(const QStringList &names)
{
    m_names = names;
    EncodeProfilesBox::fillChoice(m_fileProfile, names, fileProfile());
    EncodeProfilesBox::fillChoice(m_isoProfile, names, m_isoProfile->currentData().toString());
}

void RecordingProfileBox::renameProfile(const QString &from, const QString &to)
{
    for (QString &name : m_names)
        if (name == from)
            name = to;
    for (QComboBox *box : {m_fileProfile, m_isoProfile}) {
        const QString chosen = box->currentData().toString();
        EncodeProfilesBox::fillChoice(box, m_names, chosen == from ? to : chosen);
    }
    save();
}

QString RecordingProfileBox::fileProfile() const
{
    return m_fileProfile->currentData().toString();
}

QList<IsoRecording> RecordingProfileBox::isoRecordings() const
{
    QList<IsoRecording> isos;
    for (std::size_t c = 0; c < m_iso.size(); ++c)
        if (m_iso[c]->isChecked())
            isos << IsoRecording{int(c), m_isoProfile->currentData().toString(), {}};
    return isos;
}

void RecordingProfileBox::setRunning(bool running)
{
    for (QWidget *w : std::initializer_list<QWidget *>{m_fileProfile, m_isoProfile})
        w->setEnabled(!running);
    for (QCheckBox *box : m_iso)
        box->setEnabled(!running);
}

void RecordingProfileBox::save()
{
    StoredSettings s;
    s.setValue("output/fileProfile", fileProfile());
    s.setValue("output/isoProfile", m_isoProfile->currentData().toString());
    for (std::size_t c = 0; c < m_iso.size(); ++c)
        s.setValue(QStringLiteral("output/iso/%1").arg(c + 1), m_iso[c]->isChecked());
}

void RecordingProfileBox::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::LanguageChange)
        retranslateUi();
    QWidget::changeEvent(event);
}

void RecordingProfileBox::retranslateUi()
{
    m_fileLabel->setText(tr("Profile:"));
    m_fileProfile->setToolTip(tr("The encode profile the recording takes"));
    m_isoLabel->setText(tr("Record on its own:"));
    for (std::size_t c = 0; c < m_iso.size(); ++c)
        m_iso[c]->setToolTip(tr("Record channel %1 on its own, with its own sound").arg(c + 1));
    m_isoProfileLabel->setText(tr("Channels' profile:"));
    m_hint->setText(tr("A channel recorded on its own is written beside the recording as "
                       "NAME_isoN with the same container."));
    // The choices' words ("default", "missing") in the new language; the choices stay.
    EncodeProfilesBox::fillChoice(m_fileProfile, m_names, fileProfile());
    EncodeProfilesBox::fillChoice(m_isoProfile, m_names, m_isoProfile->currentData().toString());
}

} // namespace selvane
