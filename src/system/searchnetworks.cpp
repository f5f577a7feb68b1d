#include "system/searchnetworks.h"

#include "client/hostlist.h"
#include "protocol/safefile.h"
#include "services/windowservices.h"

#include <QDialogButtonBox>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QGroupBox>
#include <QHostAddress>
#include <QLabel>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRegularExpression>
#include <QVBoxLayout>

namespace {

const QString Example =
    QStringLiteral("# One entry a line: an address (192.0.2.10), a range (192.0.2.10-192.0.2.40)\n"
                   "# or a network (192.0.2.0/24, at most a /16). '#' starts a comment.\n");

bool isAddress(const QString& text) {
    static const QRegularExpression octets(QStringLiteral("^(\\d{1,3})(\\.\\d{1,3}){3}$"));
    QHostAddress address;
    return octets.match(text).hasMatch() && address.setAddress(text);
}

// What the search program takes: an address, a range of two, a network of /16 or less.
bool isHostEntry(const QString& entry) {
    if (const qsizetype dash = entry.indexOf(u'-'); dash > 0)
        return isAddress(entry.left(dash)) && isAddress(entry.mid(dash + 1));
    if (const qsizetype slash = entry.indexOf(u'/'); slash > 0) {
        bool number = false;
        const int prefix = entry.mid(slash + 1).toInt(&number);
        return isAddress(entry.left(slash)) && number && prefix >= 16 && prefix <= 32;
    }
    return isAddress(entry);
}

} // namespace

SearchNetworks::SearchNetworks(WindowServices& session, QWidget* parent)
    : QDialog(parent), s_(session), source_(new QLabel), entries_(new QListWidget),
      editor_(new QPlainTextEdit) {
    setObjectName(QStringLiteral("search_networks"));
    setWindowTitle(QStringLiteral("Networks to search"));
    auto* layout = new QVBoxLayout(this);
    source_->setObjectName(QStringLiteral("search_source"));
    source_->setWordWrap(true);
    layout->addWidget(source_);
    entries_->setObjectName(QStringLiteral("search_entries"));
    layout->addWidget(entries_);

    const QString path = search::userHostListPath();
    auto* own = new QGroupBox(QStringLiteral("Your list: %1").arg(QDir::toNativeSeparators(path)));
    auto* ownLayout = new QVBoxLayout(own);
    editor_->setObjectName(QStringLiteral("search_list"));
    QString error;
    const auto text = safefile::readRegularFile(path, 1024 * 1024, &error);
    editor_->setPlainText(text ? QString::fromLatin1(*text) : Example);
    ownLayout->addWidget(editor_);
    layout->addWidget(own, 1);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    QPushButton* save =
        buttons->addButton(QStringLiteral("&Save your list"), QDialogButtonBox::ActionRole);
    save->setObjectName(QStringLiteral("search_save"));
    QPushButton* automatic =
        buttons->addButton(QStringLiteral("Search &automatically"), QDialogButtonBox::ActionRole);
    automatic->setObjectName(QStringLiteral("search_automatic"));
    automatic->setToolTip(QStringLiteral("Remove your list: the search probes the networks of "
                                         "this computer, unless another list is in force"));
    connect(save, &QPushButton::clicked, this, [this] { saveList(editor_->toPlainText()); });
    connect(automatic, &QPushButton::clicked, this, &SearchNetworks::useAutomatic);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    layout->addWidget(buttons);
    showInForce();
    resize(520, 460);
}

void SearchNetworks::showInForce() {
    const search::HostList list = search::hostListInForce();
    source_->setText(QStringLiteral("\"Search MAC\" probes %1:").arg(search::sourceText(list)));
    entries_->clear();
    const QStringList shown = list.entries.mid(0, MaxShownEntries);
    entries_->addItems(shown);
    if (list.entries.size() > shown.size())
        entries_->addItem(
            QStringLiteral("... and %1 more").arg(list.entries.size() - shown.size()));
    if (list.entries.isEmpty())
        entries_->addItem(QStringLiteral("(no network: this computer has no interface that is up "
                                         "with an IPv4 address; write your list below)"));
}

bool SearchNetworks::saveList(const QString& text) {
    const QStringList entries = search::hostEntries(text);
    for (const QString& entry : entries)
        if (!isHostEntry(entry)) {
            s_.exclamation(QStringLiteral("\"%1\" is not an address, a range or a network of "
                                          "at most a /16; the list was not saved.")
                               .arg(entry.left(40)));
            return false;
        }
    const QString path = search::userHostListPath();
    QString error;
    if (!QDir().mkpath(QFileInfo(path).path()) ||
        !safefile::writeFileReplacing(path, text.toLatin1(), &error)) {
        s_.exclamation(QStringLiteral("Your list was not saved: %1").arg(error));
        return false;
    }
    showInForce();
    return true;
}

bool SearchNetworks::useAutomatic() {
    QFile file(search::userHostListPath());
    if (file.exists() && !file.remove()) {
        s_.exclamation(QStringLiteral("Your list cannot be removed: %1").arg(file.errorString()));
        return false;
    }
    editor_->setPlainText(Example);
    showInForce();
    return true;
}
