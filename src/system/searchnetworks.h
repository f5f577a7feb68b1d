#pragma once

#include <QDialog>

class QLabel;
class QListWidget;
class QPlainTextEdit;
class WindowServices;

// File > Networks to search...: which hosts "Search MAC" probes and where that comes
// from (the environment, the user's list, the system's, the list beside the search
// program, or the networks of this computer), the user's own list to edit, and the way
// back to the automatic search.
class SearchNetworks : public QDialog {
    Q_OBJECT
public:
    static constexpr int MaxShownEntries = 500;

    SearchNetworks(WindowServices& session, QWidget* parent = nullptr);

    // Writes the text as the user's list: false, after a message, when an entry is no
    // host or the file cannot be written; nothing is written then.
    bool saveList(const QString& text);
    // Removes the user's list: the search falls back on the next list, or the networks.
    bool useAutomatic();

private:
    void showInForce();

    WindowServices& s_;
    QLabel* source_;
    QListWidget* entries_;
    QPlainTextEdit* editor_;
};
