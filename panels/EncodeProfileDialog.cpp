#include "panels/EncodeProfileDialog.h"

#include "engine/OutputRules.h"
#include "engine/Problem.h"
#include "output/EncodeProfiles.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>

namespace selvane {

namespace {
// The rates offered; 0 is the program's own.
const double kRates[] = {0, 60, 50, 30, 25, 24, 15};
} // namespace

EncodeProfileDialog::EncodeProfileDialog(QWidget *parent, const EncodeProfile &profile,
                                         const QList<EncodeProfile> &others, double programFps)
    : QDialog(parent), m_original(profile), m_others(others), m_programFps(programFps)
{
    setObjectName("encodeProfileDialog");
    setWindowTitle(tr("Encode profile"));
    m_name = new QLineEdit(profile.name, this);
    m_name->setAccessibleName("Profile Name");
    m_name->setPlaceholderText(tr("e.g. low, mobile_720"));
    m_name->setMaxLength(32);
    m_width = new QSpinBox(this);
    m_width->setAccessibleName("Profile Width");
    m_height = new QSpinBox(this);
    m_height->setAccessibleName("Profile Height");
    for (QSpinBox *side : {m_width, m_height}) {
        // 0 stands for the program's own size.
        side->setRange(0, 8192);
        side->setSingleStep(2);
        side->setSpecialValueText(tr("program's"));
    }
    const bool sized = profile.size.isValid() && !profile.size.isEmpty();
    m_width->setValue(sized ? profile.size.width() : 0);
    m_height->setValue(sized ? profile.size.height() : 0);
    m_fps = new QComboBox(this);
    m_fps->setAccessibleName("Profile Frame Rate");
    for (double rate : kRates)
        m_fps->addItem(rate > 0 ? tr("%1 fps").arg(rate) : tr("The program's"), rate);
    const int rate = m_fps->findData(profile.fps);
    if (rate < 0)
        m_fps->addItem(tr("%1 fps").arg(profile.fps), profile.fps);
    m_fps->setCurrentIndex(rate < 0 ? m_fps->count() - 1 : rate);
    m_bitrate = new QSpinBox(this);
    m_bitrate->setAccessibleName("Profile Bitrate");
    m_bitrate->setRange(0, 400000);
    m_bitrate->setSingleStep(500);
    m_bitrate->setSuffix(tr(" kbit/s"));
    m_bitrate->setSpecialValueText(tr("Automatic"));
    m_bitrate->setValue(qMax(0, profile.bitrateKbps));
    m_preset = new QComboBox(this);
    m_preset->setAccessibleName("Profile Preset");
    m_preset->addItems({tr("Performance"), tr("Balanced"), tr("Quality")});
    m_preset->setCurrentIndex(qBound(0, profile.qualityPreset, 2));
    m_adaptive = new QCheckBox(tr("Adaptive bitrate"), this);
    m_adaptive->setAccessibleName("Profile Adaptive Bitrate");
    m_adaptive->setToolTip(tr("The bitrate steps down while a target of this profile is "
                              "congested, and back up once it keeps up"));
    m_adaptive->setChecked(profile.adaptive);
    m_floor = new QSpinBox(this);
    m_floor->setAccessibleName("Profile Adaptive Floor");
    m_floor->setRange(5, 100);
    m_floor->setSuffix(QStringLiteral(" %"));
    m_floor->setPrefix(tr("down to "));
    m_floor->setValue(qBound(5, profile.floorPercent, 100));
    m_floor->setEnabled(profile.adaptive);
    connect(m_adaptive, &QCheckBox::toggled, m_floor, &QWidget::setEnabled);
    m_multiview = new QCheckBox(tr("Shows the multiview"), this);
    m_multiview->setAccessibleName("Profile Shows Multiview");
    m_multiview->setToolTip(tr("Its outputs show the multiview (preview, program and the four "
                               "channels) instead of the program"));
    m_multiview->setChecked(profile.multiview);
    m_error = new QLabel(this);
    m_error->setAccessibleName("Profile Problem");
    m_error->setStyleSheet("color: #ff6b6b;");
    m_error->setWordWrap(true);
    m_error->hide();

    auto *sizeRow = new QHBoxLayout;
    sizeRow->addWidget(m_width, 1);
    sizeRow->addWidget(new QLabel(QStringLiteral("×"), this));
    sizeRow->addWidget(m_height, 1);
    auto *adaptiveRow = new QHBoxLayout;
    adaptiveRow->addWidget(m_adaptive);
    adaptiveRow->addWidget(m_floor, 1);
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    buttons->button(QDialogButtonBox::Ok)->setText(tr("OK"));
    buttons->button(QDialogButtonBox::Ok)->setAccessibleName("OK");
    buttons->button(QDialogButtonBox::Cancel)->setText(tr("Cancel"));
    buttons->button(QDialogButtonBox::Cancel)->setAccessibleName("Cancel");
    auto *form = new QFormLayout(this);
    form->addRow(tr("Name:"), m_name);
    form->addRow(tr("Size:"), sizeRow);
    form->addRow(tr("Frame rate:"), m_fps);
    form->addRow(tr("Bitrate:"), m_bitrate);
    form->addRow(tr("Preset:"), m_preset);
    form->addRow(QString(), adaptiveRow);
    form->addRow(QString(), m_multiview);
    form->addRow(m_error);
    form->addRow(buttons);
    connect(buttons, &QDialogButtonBox::accepted, this, &EncodeProfileDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &EncodeProfileDialog::reject);
}

EncodeProfile EncodeProfileDialog::profile() const
{
    EncodeProfile p = m_original;
    p.name = m_name->text().trimmed();
    p.size = m_width->value() > 0 || m_height->value() > 0
                 ? QSize(m_width->value(), m_height->value())
                 : QSize();
    p.fps = m_fps->currentData().toDouble();
    p.bitrateKbps = m_bitrate->value();
    p.qualityPreset = m_preset->currentIndex();
    p.adaptive = m_adaptive->isChecked();
    p.floorPercent = m_floor->value();
    p.multiview = m_multiview->isChecked();
    return p;
}

void EncodeProfileDialog::accept()
{
    const EncodeProfile p = profile();
    QString why;
    if (p.name.isEmpty()) {
        why = tr("Give the profile a name.");
    } else if (profiles::isDefault(p.name)) {
        why = tr("\"default\" is the Encoding settings: choose another name.");
    } else if ((m_width->value() > 0) != (m_height->value() > 0)) {
        why = tr("Set both the width and the height, or neither for the program's size.");
    } else {
        // The engine's own checks, on the list as it would be.
        EncoderSettings check;
        check.fps = m_programFps;
        check.profiles = m_others;
        check.profiles << p;
        if (const Problem problem = OutputRules::checkProfiles(check))
            why = problemText(problem);
    }
    if (why.isEmpty()) {
        QDialog::accept();
        return;
    }
    m_error->setText(why);
    m_error->show();
}

} // namespace selvane
