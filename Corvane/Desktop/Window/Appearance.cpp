#include "Appearance.h"

#include <QApplication>
#include <QPalette>
#include <QSettings>
#include <QStyle>
#include <QStyleFactory>

namespace corvane::desktop {

namespace {

constexpr char kKey[] = "appearance";

/// A palette of a few grays and one accent; Qt derives the rest.
QPalette MakePalette(const QColor& window, const QColor& base, const QColor& text, const QColor& accent) {
    QPalette palette(window, window);
    for (const auto role :
         {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::ToolTipText})
        palette.setColor(role, text);
    palette.setColor(QPalette::Base, base);
    palette.setColor(QPalette::AlternateBase, window);
    palette.setColor(QPalette::ToolTipBase, base);
    palette.setColor(QPalette::BrightText, text);
    palette.setColor(QPalette::Highlight, accent);
    palette.setColor(QPalette::HighlightedText, Qt::white);
    palette.setColor(QPalette::Link, accent.lighter(window.lightness() < 128 ? 130 : 100));
    QColor faint = text;
    faint.setAlpha(128);
    palette.setColor(QPalette::PlaceholderText, faint);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, faint);
    return palette;
}

} // namespace

void ApplyAppearance(Appearance appearance) {
    // What the process began with, before anything was set here.
    static const QString systemStyle = QApplication::style()->objectName();
    static const QPalette systemPalette = QApplication::palette();
    if (appearance == Appearance::kSystem) {
        QApplication::setStyle(QStyleFactory::create(systemStyle));
        QApplication::setPalette(systemPalette);
        return;
    }
    // Other styles take their colors from elsewhere.
    QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    const QColor accent(0x2a, 0x6f, 0xdb);
    QApplication::setPalette(
        appearance == Appearance::kDark
            ? MakePalette({0x2b, 0x2b, 0x2e}, {0x1e, 0x1e, 0x20}, {0xe6, 0xe6, 0xe6}, accent)
            : MakePalette({0xef, 0xef, 0xef}, Qt::white, {0x1a, 0x1a, 0x1a}, accent));
}

Appearance StoredAppearance() {
    const QString stored = QSettings().value(QLatin1StringView(kKey)).toString();
    if (stored == QStringLiteral("light")) return Appearance::kLight;
    return stored == QStringLiteral("dark") ? Appearance::kDark : Appearance::kSystem;
}

void StoreAppearance(Appearance appearance) {
    const char* const name = appearance == Appearance::kLight  ? "light"
                             : appearance == Appearance::kDark ? "dark"
                                                               : "system";
    QSettings().setValue(QLatin1StringView(kKey), QString::fromLatin1(name));
}

} // namespace corvane::desktop
