#pragma once

#include <QAbstractTableModel>
#include <QByteArray>
#include <QElapsedTimer>
#include <QHash>
#include <QList>
#include <QTimer>
#include <deque>
#include <functional>

class DeviceLink;
class QIODevice;

// Every line the tool writes and every chunk that arrives, on every controller's
// socket, as rows of a table: time, controller, direction, text with its control bytes
// shown, and for a received chunk the time since the last line to that controller.
// The last MaxRows rows are kept; older ones are dropped and counted. New rows reach
// the views in batches, a few times a second, so that a busy link costs a view little.
class TrafficLog : public QAbstractTableModel {
    Q_OBJECT
public:
    static constexpr int MaxRows = 20000;
    static constexpr int MaxRowBytes = 256; // a longer chunk is cut, its length noted
    static constexpr int BatchMs = 50;
    enum Column { Time, Controller, Direction, Text, ReplyTime, ColumnCount };
    // The controller's list index, for filters.
    static constexpr int IndexRole = Qt::UserRole;

    // name gives the controller of a list index as the operator knows it.
    TrafficLog(DeviceLink& link, std::function<QString(int index)> name, QObject* parent = nullptr);

    void setPaused(bool paused) { paused_ = paused; }
    bool paused() const { return paused_; }
    void clear();
    qint64 dropped() const { return dropped_; }
    qint64 skipped() const { return skipped_; } // lines and chunks not kept while paused
    // Rows waiting for the next batch go to the views now.
    void flush();

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

signals:
    void droppedChanged(qint64 dropped);
    void skippedChanged(qint64 skipped);

private:
    struct Row {
        qint64 time; // ms since the epoch
        int index;
        bool sent;
        QByteArray bytes; // at most MaxRowBytes
        qint64 length;    // of the whole line or chunk
        qint64 replyUs;   // -1: not a reply
    };

    void record(int index, bool sent, const QByteArray& bytes);
    QString text(const Row& row) const;

    std::function<QString(int)> name_;
    std::deque<Row> rows_;
    std::deque<Row> pending_;
    QTimer batch_;
    QElapsedTimer clock_;
    QHash<int, qint64> lastSentNs_;
    qint64 dropped_ = 0;
    qint64 skipped_ = 0;
    bool paused_ = false;
};

// The rows as text, tab-separated, or as CSV with a header line.
bool writeRows(QIODevice& out, const QAbstractItemModel& rows, bool csv);
