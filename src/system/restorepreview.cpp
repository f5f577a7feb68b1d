#include "system/restorepreview.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QLabel>
#include <QListWidget>
#include <QVBoxLayout>

RestorePreview::RestorePreview(const QList<Controller>& controllers, QWidget* parent)
    : QDialog(parent), controllers_(controllers) {
    setObjectName(QStringLiteral("restore_preview"));
    setWindowTitle(QStringLiteral("Restore controller settings"));
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(new QLabel(QStringLiteral("These settings will change (now -> file):")));
    list_ = new QListWidget;
    list_->setObjectName(QStringLiteral("restore_changes"));
    layout->addWidget(list_);
    network_ = new QCheckBox(
        QStringLiteral("Also restore the &network settings (the controller restarts its network)"));
    network_->setObjectName(QStringLiteral("restore_network"));
    layout->addWidget(network_);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    layout->addWidget(buttons);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(network_, &QCheckBox::toggled, this, &RestorePreview::fill);
    fill();
    resize(560, 380);
}

bool RestorePreview::withNetwork() const {
    return network_->isChecked();
}

QStringList RestorePreview::lines() const {
    QStringList texts;
    for (int i = 0; i < list_->count(); ++i)
        texts << list_->item(i)->text();
    return texts;
}

void RestorePreview::fill() {
    list_->clear();
    for (const Controller& c : controllers_) {
        const QList<Change> changes = restoreChanges(c.wanted, c.now, withNetwork());
        if (changes.isEmpty())
            list_->addItem(QStringLiteral("%1: nothing to change").arg(c.address));
        for (const Change& change : changes)
            list_->addItem(QStringLiteral("%1: %2").arg(c.address, describeChange(change, c.now)));
    }
}
