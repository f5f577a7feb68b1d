#pragma once

#include <QGuiApplication>
#include <QScreen>
#include <QString>
#include <QTest>
#include <cstdio>

// Saves the whole X screen, as a person sees it, to `path` once what was last changed
// has been painted; says on standard error what it wrote.
inline bool shoot(const QString& path) {
    QTest::qWait(300); // painted
    const bool saved = QGuiApplication::primaryScreen()->grabWindow(0).save(path);
    std::fprintf(stderr, "%s %s\n", saved ? "wrote" : "could not write", qPrintable(path));
    return saved;
}
