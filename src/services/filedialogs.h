#pragma once

#include <QString>

class QWidget;

// The file to open or to save, asked in a dialog that fits the screen it opens on: at
// double scale on a laptop the toolkit's own size puts its buttons off the screen.
// Empty when the operator cancels.
QString askFileToOpen(QWidget* parent, const QString& title, const QString& filter);
QString askFileToSave(QWidget* parent, const QString& title, const QString& name,
                      const QString& filter);
