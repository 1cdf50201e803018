#include "panels/StreamTargetDialog.h"

#include "engine/Engine.h"
#include "engine/OutputRules.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

namespace selvane {

QString StreamTargetEntry::url() const
{
    const QString base = server.trimmed();
    if (key.trimmed().isEmpty())
        return base;
    return (base.endsWith('/') ? base : base + "/") + key.trimmed();
}

StreamTargetDialog::StreamTargetDialog(QWidget *parent, const StreamTargetEntry &entry)
    : QDialog(parent)
{
    setObjectName("streamTargetDialog");
    setWindowTitle(tr("Stream target"));
    m_kind = new QComboBox(this);
    m_kind->addItems(kinds());
    m_kind->setCurrentIndex(qMax(0, kinds().indexOf(entry.kind)));
    m_kind->setAccessibleName(tr("Target kind"));
    m_server = new QLineEdit(entry.server, this);
    m_server->setPlaceholderText("rtmp://live.example.com/app");
    m_server->setAccessibleName(tr("Server URL"));
    m_server->setMinimumWidth(380);
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
    m_enabled = new QCheckBox(tr("Use this target"), this);
    m_enabled->setChecked(entry.enabled);
    m_enabled->setAccessibleName(tr("Use this target"));
    m_error = new QLabel(this);
    m_error->setStyleSheet("color: #ff6b6b;");
    m_error->hide();

    auto *keyRow = new QHBoxLayout;
    keyRow->addWidget(m_key, 1);
    keyRow->addWidget(m_reveal);
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    buttons->button(QDialogButtonBox::Ok)->setText(tr("OK"));
    buttons->button(QDialogButtonBox::Ok)->setAccessibleName("OK");
    buttons->button(QDialogButtonBox::Cancel)->setText(tr("Cancel"));
    buttons->button(QDialogButtonBox::Cancel)->setAccessibleName("Cancel");
    auto *form = new QFormLayout(this);
    form->addRow(tr("Kind:"), m_kind);
    form->addRow(tr("Server:"), m_server);
    form->addRow(tr("Stream key:"), keyRow);
    form->addRow(QString(), m_enabled);
    form->addRow(m_error);
    form->addRow(buttons);
    connect(buttons, &QDialogButtonBox::accepted, this, &StreamTargetDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &StreamTargetDialog::reject);
}

StreamTargetEntry StreamTargetDialog::entry() const
{
    return {m_kind->currentText(), m_enabled->isChecked(), m_server->text().trimmed(),
            m_key->text().trimmed()};
}

void StreamTargetDialog::accept()
{
    const StreamTargetEntry e = entry();
    OutputSettings check;
    check.encoder.streamTargets << OutputRules::parseStreamTarget(e.url());
    if (!e.server.isEmpty() && !OutputRules::check(check, {})) {
        QDialog::accept();
        return;
    }
    m_error->setText(tr("Enter a server URL such as rtmp://host/app or srt://host:port."));
    m_error->show();
}

} // namespace selvane
