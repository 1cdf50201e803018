#include "panels/FailoverBox.h"

#include <QCheckBox>
#include <QEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>

namespace selvane {

FailoverBox::FailoverBox(QWidget *parent) : QGroupBox(parent)
{
    setAccessibleName("Failover");
    m_enabled = new QCheckBox(this);
    m_enabled->setAccessibleName("Failover On");
    m_slateLabel = new QLabel(this);
    m_slate = new QLineEdit(this);
    m_slate->setAccessibleName("Slate");
    m_browse = new QPushButton(QStringLiteral("…"), this);
    m_browse->setAccessibleName("Choose Slate");
    m_textLabel = new QLabel(this);
    m_text = new QLineEdit(this);
    m_text->setAccessibleName("Slate Text");
    m_failoverLabel = new QLabel(this);
    m_failoverMs = new QSpinBox(this);
    m_failoverMs->setAccessibleName("Failover After");
    m_returnLabel = new QLabel(this);
    m_returnMs = new QSpinBox(this);
    m_returnMs->setAccessibleName("Return After");
    for (QSpinBox *time : {m_failoverMs, m_returnMs}) {
        time->setRange(100, 3'600'000);
        time->setSingleStep(500);
        time->setSuffix(QStringLiteral(" ms"));
    }
    auto *slateRow = new QHBoxLayout;
    slateRow->addWidget(m_slate, 1);
    slateRow->addWidget(m_browse);
    auto *form = new QFormLayout(this);
    form->addRow(m_enabled);
    form->addRow(m_slateLabel, slateRow);
    form->addRow(m_textLabel, m_text);
    form->addRow(m_failoverLabel, m_failoverMs);
    form->addRow(m_returnLabel, m_returnMs);

    const auto edited = [this] {
        if (!m_showing)
            emit changed();
    };
    connect(m_enabled, &QCheckBox::toggled, this, edited);
    connect(m_slate, &QLineEdit::editingFinished, this, edited);
    connect(m_text, &QLineEdit::editingFinished, this, edited);
    connect(m_failoverMs, &QSpinBox::editingFinished, this, edited);
    connect(m_returnMs, &QSpinBox::editingFinished, this, edited);
    connect(m_browse, &QPushButton::clicked, this, &FailoverBox::chooseSlate);
    show(FailoverSettings{});
    retranslateUi();
}

FailoverSettings FailoverBox::settings(FailoverSettings settings) const
{
    settings.enabled = m_enabled->isChecked();
    settings.slatePath = m_slate->text().trimmed();
    settings.slateText = m_text->text();
    settings.failoverMs = m_failoverMs->value();
    settings.returnMs = m_returnMs->value();
    return settings;
}

void FailoverBox::show(const FailoverSettings &settings)
{
    m_showing = true;
    m_enabled->setChecked(settings.enabled);
    m_slate->setText(settings.slatePath);
    m_text->setText(settings.slateText);
    m_failoverMs->setValue(settings.failoverMs);
    m_returnMs->setValue(settings.returnMs);
    m_showing = false;
}

void FailoverBox::chooseSlate()
{
    const QString file = QFileDialog::getOpenFileName(
        this, tr("Choose the Slate"), QFileInfo(m_slate->text()).absolutePath(),
        tr("Pictures and clips (*.png *.jpg *.jpeg *.bmp *.webp *.mp4 *.mov *.mkv *.webm);;"
           "All files (*)"));
    if (file.isEmpty())
        return;
    m_slate->setText(file);
    emit changed();
}

void FailoverBox::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::LanguageChange)
        retranslateUi();
    QGroupBox::changeEvent(event);
}

void FailoverBox::retranslateUi()
{
    setTitle(tr("Failover"));
    m_enabled->setText(tr("When the channel on air fails, show its backup"));
    m_slateLabel->setText(tr("Slate"));
    m_slate->setPlaceholderText(tr("Built-in card"));
    m_slate->setToolTip(tr("Shown for a failed channel without a backup"));
    m_textLabel->setText(tr("Slate text"));
    m_text->setPlaceholderText(tr("The programme will be back shortly"));
    m_failoverLabel->setText(tr("Fail over after"));
    m_failoverMs->setToolTip(tr("How long the channel on air may show no new picture"));
    m_returnLabel->setText(tr("Return after"));
    m_returnMs->setToolTip(tr("How long a failed channel must play steadily to come back"));
}

} // namespace selvane
