#include "link/trafficlog.h"

#include "link/devicelink.h"
#include "protocol/command.h"

#include <QDateTime>
#include <QIODevice>
#include <QTextStream>

TrafficLog::TrafficLog(DeviceLink& link, std::function<QString(int)> name, QObject* parent)
    : QAbstractTableModel(parent), name_(std::move(name)) {
    clock_.start();
    batch_.setSingleShot(true);
    batch_.setInterval(BatchMs);
    connect(&batch_, &QTimer::timeout, this, &TrafficLog::flush);
    connect(&link, &DeviceLink::written, this,
            [this](int index, const QByteArray& bytes) { record(index, true, bytes); });
    connect(&link, &DeviceLink::received, this,
            [this](int index, const QByteArray& bytes) { record(index, false, bytes); });
}

void TrafficLog::record(int index, bool sent, const QByteArray& bytes) {
    const qint64 now = clock_.nsecsElapsed();
    qint64 replyUs = -1;
    if (sent)
        lastSentNs_[index] = now; // also while paused: a reply after is timed from its line
    else if (lastSentNs_.contains(index))
        replyUs = (now - lastSentNs_.value(index)) / 1000;
    if (paused_) {
        emit skippedChanged(++skipped_);
        return;
    }
    pending_.push_back({QDateTime::currentMSecsSinceEpoch(), index, sent, bytes.left(MaxRowBytes),
                        bytes.size(), replyUs});
    if (pending_.size() > MaxRows) {
        pending_.pop_front();
        ++dropped_;
    }
    if (!batch_.isActive())
        batch_.start();
}

void TrafficLog::flush() {
    batch_.stop();
    if (pending_.empty())
        return;
    const qsizetype overflow = static_cast<qsizetype>(rows_.size() + pending_.size()) - MaxRows;
    if (overflow > 0) {
        const int gone = static_cast<int>(qMin<qsizetype>(overflow, rows_.size()));
        beginRemoveRows({}, 0, gone - 1);
        rows_.erase(rows_.begin(), rows_.begin() + gone);
        endRemoveRows();
        dropped_ += gone;
        emit droppedChanged(dropped_);
    }
    const int first = static_cast<int>(rows_.size());
    beginInsertRows({}, first, first + static_cast<int>(pending_.size()) - 1);
    rows_.insert(rows_.end(), pending_.begin(), pending_.end());
    pending_.clear();
    endInsertRows();
}

void TrafficLog::clear() {
    beginResetModel();
    rows_.clear();
    pending_.clear();
    dropped_ = 0;
    skipped_ = 0;
    endResetModel();
    emit droppedChanged(0);
    emit skippedChanged(0);
}

int TrafficLog::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(rows_.size());
}

int TrafficLog::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : ColumnCount;
}

QString TrafficLog::text(const Row& row) const {
    QString shown = visibleText(row.bytes);
    if (row.length > row.bytes.size())
        shown += QStringLiteral(" ... (%1 bytes)").arg(row.length);
    return shown;
}

QVariant TrafficLog::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= static_cast<int>(rows_.size()))
        return {};
    const Row& row = rows_[static_cast<size_t>(index.row())];
    if (role == IndexRole)
        return row.index;
    if (role != Qt::DisplayRole)
        return {};
    switch (index.column()) {
    case Time:
        return QDateTime::fromMSecsSinceEpoch(row.time).toString(QStringLiteral("hh:mm:ss.zzz"));
    case Controller:
        return name_(row.index);
    case Direction:
        return row.sent ? QStringLiteral("sent") : QStringLiteral("received");
    case Text:
        return text(row);
    case ReplyTime:
        return row.replyUs < 0 ? QString()
                               : QStringLiteral("%1 ms").arg(row.replyUs / 1000.0, 0, 'f', 1);
    }
    return {};
}

QVariant TrafficLog::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return {};
    static const char* const names[] = {"Time", "Controller", "Direction", "Text", "Reply after"};
    return section >= 0 && section < ColumnCount ? QString::fromLatin1(names[section]) : QVariant();
}

namespace {

QString csvField(const QString& field) {
    if (!field.contains(u',') && !field.contains(u'"'))
        return field;
    return u'"' + QString(field).replace(u'"', QLatin1String("\"\"")) + u'"';
}

} // namespace

bool writeRows(QIODevice& out, const QAbstractItemModel& rows, bool csv) {
    QTextStream stream(&out);
    const QString separator = csv ? QStringLiteral(",") : QStringLiteral("\t");
    auto line = [&](auto cell) {
        QStringList fields;
        for (int c = 0; c < rows.columnCount(); ++c)
            fields << (csv ? csvField(cell(c)) : cell(c));
        stream << fields.join(separator) << '\n';
    };
    if (csv)
        line([&](int c) { return rows.headerData(c, Qt::Horizontal).toString(); });
    for (int r = 0; r < rows.rowCount(); ++r)
        line([&](int c) { return rows.data(rows.index(r, c)).toString(); });
    stream.flush();
    return stream.status() == QTextStream::Ok;
}
