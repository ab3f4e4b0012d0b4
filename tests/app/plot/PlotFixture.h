// A window of the test's own next to what pondera-cli plot reports.
#pragma once

#include "tests/ui/main/WindowFixture.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QStringList>
#include <QTemporaryDir>

// Runs pondera-cli with the arguments; the JSON object it printed (empty on failure).
inline QJsonObject RunCli(const QStringList& args, int* exitCode = nullptr) {
    QProcess cli;
    cli.start(PONDERA_CLI, args);
    if (!cli.waitForFinished(60000)) return {};
    if (exitCode) *exitCode = cli.exitCode();
    return QJsonDocument::fromJson(cli.readAllStandardOutput()).object();
}

// The two images show the same pixels.
inline bool SamePixels(const QImage& a, const QImage& b) {
    return a.convertToFormat(QImage::Format_RGB32) == b.convertToFormat(QImage::Format_RGB32);
}
