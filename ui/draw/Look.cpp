#include "ui/draw/Look.h"

#include <QFile>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QPalette>

namespace look {

namespace {

// The classic values of the system colours, used before there is an
// application palette to ask.
QColor FallbackSystemColor(uint32_t index) {
    switch (index) {
    case 0x05:
        return QColor(0xFF, 0xFF, 0xFF); // window background
    case 0x08:
        return QColor(0x00, 0x00, 0x00); // window text
    case 0x0F:
        return QColor(0xF0, 0xF0, 0xF0); // button face
    case 0x10:
        return QColor(0xA0, 0xA0, 0xA0); // button shadow
    default:
        return QColor(0xF0, 0xF0, 0xF0);
    }
}

QColor SystemColor(uint32_t index) {
    if (!qobject_cast<QGuiApplication*>(QCoreApplication::instance()))
        return FallbackSystemColor(index);
    const QPalette palette = QGuiApplication::palette();
    switch (index) {
    case 0x05:
        return palette.color(QPalette::Base);
    case 0x08:
        return palette.color(QPalette::Text);
    case 0x0F:
        return palette.color(QPalette::Button);
    case 0x10: {
        // The palette's dark role is far darker in some styles; the grey of the
        // impossible region must stay light enough for the curve to show on it.
        const QColor dark = palette.color(QPalette::Dark);
        return dark.lightness() < 110 ? FallbackSystemColor(index) : dark;
    }
    default:
        return FallbackSystemColor(index);
    }
}

QString& ChosenFamily() {
    static QString family;
    return family;
}

} // namespace

QColor ToQColor(uint32_t bgr) {
    if (bgr & 0x80000000u) return SystemColor(bgr & 0xFFu);
    return QColor(RedOf(bgr), GreenOf(bgr), BlueOf(bgr));
}

uint32_t FromQColor(const QColor& color) {
    return RGB(color.red(), color.green(), color.blue());
}

uint32_t Resolve(uint32_t bgr) {
    return (bgr & 0x80000000u) ? FromQColor(ToQColor(bgr)) : (bgr & 0xFFFFFFu);
}

QString RegisterAppFont() {
    QString& family = ChosenFamily();
    if (!family.isEmpty()) return family;
    // The font database needs a GUI application; without one, name the face.
    if (!qobject_cast<QGuiApplication*>(QCoreApplication::instance()))
        return QStringLiteral("Tahoma");
    static const char* const kFiles[] = {"/usr/share/wine/fonts/tahoma.ttf",
                                         "/usr/share/wine/fonts/tahomabd.ttf"};
    for (const char* file : kFiles) {
        if (!QFile::exists(QString::fromLatin1(file))) continue;
        const int id = QFontDatabase::addApplicationFont(QString::fromLatin1(file));
        if (id < 0) continue;
        const QStringList families = QFontDatabase::applicationFontFamilies(id);
        if (family.isEmpty() && !families.isEmpty()) family = families.first();
    }
    if (family.isEmpty()) family = QFontDatabase::systemFont(QFontDatabase::GeneralFont).family();
    return family;
}

QString AppFontFamily() {
    return RegisterAppFont();
}

QFont AppFont(double pointSize, bool bold, bool italic) {
    QFont font(AppFontFamily());
    font.setPointSizeF(pointSize > 0 ? pointSize : 8.25);
    font.setBold(bold);
    font.setItalic(italic);
    return font;
}

QColor AccentColor() {
    return QColor(0x2F, 0x6F, 0xD0);
}

QColor InactiveCaptionColor() {
    return QColor(0xDA, 0xDE, 0xE4);
}

} // namespace look
