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

// "" when the images are equal, else where and how much they differ.
inline std::string ImageDiff(const QImage& a, const QImage& b) {
    if (a.size() != b.size())
        return "sizes differ: " + std::to_string(a.width()) + "x" + std::to_string(a.height()) +
               " vs " + std::to_string(b.width()) + "x" + std::to_string(b.height());
    int count = 0, fx = -1, fy = -1;
    for (int y = 0; y < a.height(); ++y)
        for (int x = 0; x < a.width(); ++x)
            if ((a.pixel(x, y) & 0xFFFFFF) != (b.pixel(x, y) & 0xFFFFFF) && count++ == 0) {
                fx = x;
                fy = y;
            }
    if (count == 0) return "";
    return std::to_string(count) + " pixels differ, first at (" + std::to_string(fx) + ", " +
           std::to_string(fy) + ")";
}
