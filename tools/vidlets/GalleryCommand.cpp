// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "Command.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QQuickWindow>

#include <VidletsAuthor/AuthorGallery.h>

using namespace Qt::StringLiterals;
using namespace Vidlets;

namespace {

constexpr double kMinScale = 0.25;
constexpr double kMaxScale = 8.0;
constexpr int kFontPx = 13;

bool readScales(const QStringList& values, QList<double>& scales)
{
    for (const QString& value : values) {
        bool isNumber = false;
        const double scale = value.toDouble(&isNumber);
        if (!isNumber || !(scale >= kMinScale && scale <= kMaxScale))
            return false;
        if (!scales.contains(scale))
            scales.append(scale);
    }
    return true;
}

void printKeys(const QString& word, const QStringList& keys)
{
    for (const QString& key : keys)
        Command::print(u"%1: %2\n"_s.arg(word, printable(key)).toUtf8());
}

Command::ExitCode makeGallery(const AuthorGalleryOptions& options)
{
    AuthorGallery gallery(options);
    QString reason;
    if (!gallery.prepare(reason))
        return Command::wrongUse(reason);
    AuthorGalleryResult result;
    if (!gallery.run(result, reason))
        return Command::wrongUse(reason);
    printKeys(u"changed"_s, result.changed);
    printKeys(u"new"_s, result.added);
    printKeys(u"gone"_s, result.gone);
    // All at once, since the directory may have a "%2" in it.
    Command::print(u"%1/index.html: %2, %3 failed\n"_s
                       .arg(printable(options.directory), counted(result.tips, u"tip"_s),
                            QString::number(result.failed))
                       .toUtf8());
    return result.failed > 0 || result.hasFaults ? Command::Found : Command::Fine;
}

} // namespace

std::unique_ptr<QCoreApplication> makeGalleryApplication(int& argc, char** argv)
{
    // Neither a display nor what the user's desktop is like makes a difference.
    for (const char* name :
         {"QT_QPA_PLATFORMTHEME", "QT_STYLE_OVERRIDE", "QT_SCALE_FACTOR", "QT_SCREEN_SCALE_FACTORS",
          "QT_FONT_DPI", "QT_ENABLE_HIGHDPI_SCALING", "QT_AUTO_SCREEN_SCALE_FACTOR",
          "QT_QUICK_CONTROLS_STYLE", "QSG_RHI_BACKEND"})
        qunsetenv(name);
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("QT_QUICK_BACKEND", "software");
    qputenv("QML_DISABLE_DISK_CACHE", "1");
    qputenv("TZ", "UTC");
    // What is said of a tip stands in the page, beside it.
    qInstallMessageHandler(Command::writeGraveMessage);
    QCoreApplication::setAttribute(Qt::AA_Use96Dpi);
    auto application = std::make_unique<QApplication>(argc, argv);
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    QFont font = QApplication::font();
    font.setFamily(u"Sans Serif"_s);
    font.setPixelSize(kFontPx);
    QApplication::setFont(font);
    QApplication::setCursorFlashTime(0);
    return application;
}

Command::ExitCode runGallery(const QStringList& arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        u"Draws every tip, without a display, into pictures and a page that shows them, "
        "\"index.html\".\nTwo galleries of the same packages are the same to the last byte.\n"
        "Ends with 0 where all is well, with 1 where a tip fails or \"vidlets check\" finds an "
        "error or a warning, and with 2 where it cannot be told what to draw."_s);
    parser.addPositionalArgument(u"PATH"_s, u"A package or a data path."_s, u"PATH"_s);
    parser.addOptions({
        {{u"o"_s, u"output"_s},
         u"The directory of the gallery; a gallery in it is replaced."_s,
         u"DIR"_s},
        {u"locale"_s, u"Draws this language alone; may be given several times."_s, u"LOCALE"_s},
        {u"dark"_s, u"Draws each tip in dark colours, too."_s},
        {u"rtl"_s, u"Draws each tip mirrored, too, as for languages written from the right."_s},
        {u"scale"_s, u"Draws in this scale of the host; may be given several times."_s, u"SCALE"_s},
        {u"compare"_s, u"Marks and lists what differs from an older gallery."_s, u"OLDDIR"_s},
    });
    Command::ExitCode code = Command::Fine;
    if (!Command::parse(parser, u"gallery"_s, arguments, code))
        return code;
    const QStringList paths = parser.positionalArguments();
    if (paths.size() != 1)
        return Command::wrongUse(u"What is to be drawn? vidlets gallery PATH -o DIR"_s);
    AuthorGalleryOptions options;
    options.path = paths.constFirst();
    options.directory = parser.value(u"output"_s);
    if (options.directory.isEmpty())
        return Command::wrongUse(u"Where to? vidlets gallery PATH -o DIR"_s);
    if (!readScales(parser.values(u"scale"_s), options.scales))
        return Command::wrongUse(u"A scale is a number from 0.25 to 8."_s);
    QString reason;
    if (!Command::readLocales(parser.values(u"locale"_s), options.locales, reason))
        return Command::wrongUse(reason);
    options.isDark = parser.isSet(u"dark"_s);
    options.isRightToLeft = parser.isSet(u"rtl"_s);
    options.oldDirectory = parser.value(u"compare"_s);
    return makeGallery(options);
}
