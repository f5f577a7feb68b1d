#pragma once

#include <QDockWidget>

class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QTableView;
class WindowServices;
class TrafficFilter;
class TrafficLog;

// The traffic monitor: a dock with every line sent and every chunk received on every
// controller's socket, filtered by controller and text, paused, cleared and saved as
// text or CSV. It follows the newest row unless the operator has scrolled back.
class TrafficMonitor : public QDockWidget {
    Q_OBJECT
public:
    // log records from the start; the dock is built only when first wanted.
    TrafficMonitor(WindowServices& session, TrafficLog& log, QWidget* parent = nullptr);
    ~TrafficMonitor() override;

    TrafficLog& log() { return *log_; }
    // Writes the rows shown, as CSV when path ends in ".csv", else tab-separated text.
    // False after telling the operator why.
    bool saveTo(const QString& path);

private:
    void showCounts();
    QWidget* buildControls();
    void fillControllerFilter();
    void save();

    WindowServices& s_;
    TrafficLog* log_;
    TrafficFilter* filter_;
    QTableView* view_;
    QComboBox* controllers_;
    QLineEdit* text_;
    QPushButton* pause_;
    QLabel* dropped_;
    bool following_ = true;
};
