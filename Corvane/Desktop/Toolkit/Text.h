#pragma once

#include <filesystem>

#include <QFile>
#include <QString>

#include "Services/UI/UILayout.h"

namespace corvane::desktop {

// All of these can be called on any thread.

/// Text of the toolkit as Qt's, and back. Both are UTF-16.
inline QString ToQt(const Mosk::String& text) {
    return QString::fromUtf16(text.data(), static_cast<qsizetype>(text.size()));
}
inline Mosk::String FromQt(const QString& text) {
    return text.toStdU16String();
}

/// A path as Qt's text, and back, in the encoding that the system's file names have.
inline QString FromPath(const std::filesystem::path& path) {
    return QFile::decodeName(path.c_str());
}
inline std::filesystem::path ToPath(const QString& name) {
    return QFile::encodeName(name).toStdString();
}

/// A text for a widget in which "&" marks a mnemonic: taken literally.
inline QString Literal(const Mosk::String& text) {
    return ToQt(text).replace(u'&', QStringLiteral("&&"));
}

/// A text for such a widget, with the layout's mnemonic.
inline QString WithMnemonic(const LabelText& label) {
    if (!label.mnemonic) return Literal(label.text);
    return Literal(label.text.substr(0, *label.mnemonic)) + u'&' +
           Literal(label.text.substr(*label.mnemonic));
}

} // namespace corvane::desktop
