// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "AuthorTranslations.h"

#include "AuthorFiles.h"
#include <Vidlets/VLSettings.h>
#include <Vidlets/VLTranslationData.h>

#include <QDir>
#include <QFileInfo>
#include <QLocale>
#include <QTranslator>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace Vidlets {

namespace {

/// That of hosts which set none.
QString translationStem()
{
    return Settings::translationStem(VLContext());
}

/// How much of a text is told.
QString shortened(const QString& text)
{
    constexpr qsizetype kLength = 60;
    const QString line = text.simplified();
    return line.size() > kLength ? line.left(kLength) + u"..."_s : line;
}

/// The locale in the name of a file, which the library puts there itself; null without one.
QString localeIn(const QString& path)
{
    const QString name = QFileInfo(path).completeBaseName();
    const QString stem = translationStem() + u'_';
    return name.startsWith(stem) ? name.mid(stem.size()) : QString();
}

/// What a compiled file has for @p message, as a scene would get it.
QString lookUp(const QTranslator& translator, const AuthorTsMessage& message)
{
    const QByteArray comment = message.comment.toUtf8();
    return translator.translate(message.context.toUtf8().constData(),
                                message.source.toUtf8().constData(),
                                comment.isEmpty() ? nullptr : comment.constData());
}

/// How many texts a compiled file has.
qsizetype countIn(const QByteArray& checked)
{
    // It begins with the hashes, of which each text has one.
    constexpr qsizetype kMagicBytes = 16;
    constexpr quint8 kHashes = 0x42;
    constexpr qsizetype kHashBytes = 8;
    constexpr qsizetype kHeadBytes = 5;
    for (qsizetype at = kMagicBytes; at + kHeadBytes <= checked.size();) {
        quint32 length = 0;
        for (qsizetype i = 1; i < kHeadBytes; ++i)
            length = (length << 8U) | static_cast<quint8>(checked.at(at + i));
        if (static_cast<quint8>(checked.at(at)) == kHashes)
            return static_cast<qsizetype>(length) / kHashBytes;
        at += kHeadBytes + static_cast<qsizetype>(length);
    }
    return 0;
}

} // namespace

AuthorTranslations::AuthorTranslations(const AuthorPackages& packages, AuthorFindings& findings)
    : m_packages(packages)
    , m_findings(findings)
{
}

void AuthorTranslations::addControlFile(const AuthorPackage& package, const AuthorControlFile& file)
{
    PackageFacts& facts = m_facts[package.name];
    facts.search.unite(QSet<QString>(file.search.cbegin(), file.search.cend()));
    facts.directories += file.translationDirectories;
    if (!file.isInUse)
        return;
    AuthorControlFile known;
    known.path = file.path;
    known.isInUse = true;
    known.locale = file.locale;
    known.search = file.search;
    known.scenes = file.scenes;
    m_files[package.path].append(known);
}

void AuthorTranslations::addTranslating(const AuthorPackage& package)
{
    m_facts[package.name].isTranslating = true;
}

void AuthorTranslations::check(const QStringList& locales)
{
    for (const AuthorPackage& package : m_packages.packages()) {
        QSet<QString> directories = m_facts.value(package.name).directories;
        directories.insert(Settings::translationDirectoryDefault());
        QStringList sorted(directories.cbegin(), directories.cend());
        // The same ones are compared in each run.
        sorted.sort();
        for (const QString& directory : std::as_const(sorted))
            checkDirectory(package, directory);
    }
    for (const AuthorPackage& package : m_packages.packages()) {
        for (const QString& locale : locales)
            checkLocale(package, locale);
    }
}

void AuthorTranslations::checkDirectory(const AuthorPackage& package, const QString& directory)
{
    const QString path = QDir::cleanPath(AuthorFiles::join(package.path, directory));
    // What lies outside of the package is not the package's, whatever its control files say.
    const QString canonical = QFileInfo(path).canonicalFilePath();
    if (!canonical.startsWith(package.canonicalPath + u'/'))
        return;
    PackageFacts& facts = m_facts[package.name];
    const auto entries = AuthorFiles::list(path).value_or(QList<AuthorFiles::Entry>());
    Place place{package, AuthorStrings::directoryFor(directory), {}};
    QSet<QString> names;
    for (const AuthorFiles::Entry& entry : entries) {
        if (entry.kind == AuthorFiles::Kind::File && entry.isNamed)
            names.insert(entry.name);
    }
    for (const AuthorFiles::Entry& entry : entries) {
        const QString file = AuthorFiles::join(path, entry.name);
        const QString other = QFileInfo(entry.name).completeBaseName();
        if (!names.contains(entry.name))
            continue;
        const bool isCompiled = entry.name.endsWith(".qm"_L1);
        if (isCompiled || (entry.name.endsWith(".ts"_L1) && !names.contains(other + u".qm"_s)))
            checkName(file, facts);
        if (isCompiled)
            checkCompiled(file);
        else if (entry.name.endsWith(".ts"_L1))
            checkSource(file, names.contains(other + u".qm"_s), facts, place);
    }
}

void AuthorTranslations::checkName(const QString& path, PackageFacts& facts)
{
    const QString locale = localeIn(path);
    if (locale.isNull())
        return;
    facts.isTranslating = true;
    facts.locales.insert(locale);
    const QString name = QLocale(locale).name();
    if (name == locale)
        return;
    const QString wanted = translationStem() + u'_' + name;
    const QString help = name == "C"_L1 ? u"Name it after a locale, as in \"Vidlets_de_DE\"."_s
                                        : u"Name it \"%1\"."_s.arg(wanted);
    broken(
        path, {},
        u"The file is never looked for: there is no locale \"%1\" of that spelling."_s.arg(locale),
        help);
}

void AuthorTranslations::checkCompiled(const QString& path)
{
    QString reason;
    const auto bytes = AuthorFiles::read(path, reason);
    if (!bytes)
        broken(path, {}, u"The file is not loaded: %1."_s.arg(reason));
    else if (TranslationData::checked(*bytes).isNull())
        broken(path, {}, u"The file is no compiled file of translations, or it is damaged."_s,
               u"Compile it anew with \"vidlets strings --release\"."_s);
    else if (TranslationData::hasDependencies(*bytes))
        broken(path, {}, u"The file asks for others, which the library does not load."_s);
}

void AuthorTranslations::checkSource(const QString& path, bool isCompiled, PackageFacts& facts,
                                     Place& place)
{
    QString reason;
    const auto bytes = AuthorFiles::read(path, reason);
    if (!bytes) {
        broken(path, {}, u"The file is not looked into: %1."_s.arg(reason));
        return;
    }
    AuthorTsFile::Fault fault;
    const auto file = AuthorTsFile::read(*bytes, fault);
    if (!file) {
        broken(path, fault.position,
               u"The file is no file of translations: %1."_s.arg(
                   fault.reason.endsWith(u'.') ? fault.reason.chopped(1) : fault.reason));
        return;
    }
    const QString locale = localeIn(path);
    if (!locale.isNull() && !file->language.isEmpty() && QLocale(locale) != QLocale(file->language))
        broken(path, {},
               u"The file is named after \"%1\", and says that it is for \"%2\"."_s.arg(
                   locale, file->language),
               u"Mend the name or the attribute \"language\"."_s);
    if (!file->sourceLanguage.isEmpty())
        facts.locales.insert(QLocale(file->sourceLanguage).name());
    checkUnfinished(path, *file);
    checkLack(path, *file, place);
    const QString compiled = path.chopped(2) + u"qm"_s;
    if (isCompiled)
        checkStale(path, *file, compiled);
    else
        reportUncompiled(path, *file, compiled);
}

void AuthorTranslations::reportUncompiled(const QString& path, const AuthorTsFile& file,
                                          const QString& compiledPath)
{
    const bool hasTranslation =
        std::any_of(file.messages.cbegin(), file.messages.cend(), [](const auto& message) {
            return !message.isGone() && message.isTranslated();
        });
    m_findings.add(path, {}, u"l10n-missing"_s,
                   u"There is no \"%1\" beside it, which is what the library loads."_s.arg(
                       QFileInfo(compiledPath).fileName()),
                   // Of nothing, nothing is compiled.
                   hasTranslation ? QString()
                                  : u"Translate a text in it, then compile it with "
                                    "\"vidlets strings --release\"."_s);
}

void AuthorTranslations::checkUnfinished(const QString& path, const AuthorTsFile& file)
{
    for (const AuthorTsMessage& message : file.messages) {
        if (message.isGone() || message.isContextComment())
            continue;
        const QString text = shortened(message.source);
        if (!message.isTranslated())
            m_findings.add(path, message.position, u"l10n-unfinished"_s,
                           u"\"%1\" is not translated."_s.arg(text));
        else if (message.state == AuthorTsMessage::State::Unfinished)
            m_findings.add(path, message.position, u"l10n-unfinished"_s,
                           u"The translation of \"%1\" is not marked as finished."_s.arg(text));
    }
}

/// Reports a file that lacks texts which are there to be translated by now.
void AuthorTranslations::checkLack(const QString& path, const AuthorTsFile& file, Place& place)
{
    const QString name = localeIn(path);
    const auto language = QLocale(name).language();
    // Texts in the language that they are written in need no translation.
    const bool isOwn =
        !file.sourceLanguage.isEmpty() && QLocale(file.sourceLanguage).language() == language;
    if (name.isNull() || name == AuthorStrings::pseudoLocale() || isOwn)
        return;
    const QList<AuthorControlFile> files = m_files.value(place.package.path);
    // Each one costs a walk over the package, which has one of them, or two.
    constexpr int kMostDirectories = 10;
    if (!place.strings && ++m_compared[place.package.path] > kMostDirectories)
        return;
    if (!place.strings)
        place.strings.emplace(place.package, place.directory, files);
    // No tip's translations are looked for in a directory that none has.
    if (!place.strings->directories().contains(place.directory)
        || !place.strings->faults().isEmpty())
        return;
    const bool hasOwnTips =
        std::any_of(files.cbegin(), files.cend(), [language](const AuthorControlFile& other) {
            return !other.locale.isEmpty() && QLocale(other.locale).language() == language;
        });
    const AuthorStrings::Lack lack = place.strings->lackOf(file, !hasOwnTips);
    if (lack.count == 0)
        return;
    m_findings.add(path, {}, u"l10n-stale"_s,
                   u"The file lacks %1: \"%2\" in %3%4."_s.arg(
                       counted(lack.count, u"text"_s), shortened(lack.source), lack.place,
                       lack.count > 1 ? u", and others"_s : QString()),
                   u"Run \"vidlets strings\" again, and translate what is new."_s);
}

void AuthorTranslations::checkStale(const QString& path, const AuthorTsFile& file,
                                    const QString& compiledPath)
{
    QString reason;
    const QByteArray checked =
        TranslationData::checked(AuthorFiles::read(compiledPath, reason).value_or(QByteArray()));
    QTranslator translator;
    // What cannot be loaded has been told of.
    if (checked.isNull()
        || !translator.load(reinterpret_cast<const uchar*>(checked.constData()),
                            static_cast<int>(checked.size())))
        return;
    QSet<QString> wanted;
    for (const AuthorTsMessage& message : file.messages) {
        if (message.isGone() || !message.isTranslated())
            continue;
        wanted.insert(message.context + QChar(0) + message.source + QChar(0) + message.comment);
        if (message.isNumerus || lookUp(translator, message) == message.translations.value(0))
            continue;
        m_findings.add(compiledPath, {}, u"l10n-stale"_s,
                       u"The file has another translation of \"%1\" than %2:%3, or none."_s.arg(
                           shortened(message.source), QFileInfo(path).fileName(),
                           QString::number(message.position.line)));
        return;
    }
    if (countIn(checked) > wanted.size())
        m_findings.add(
            compiledPath, {}, u"l10n-stale"_s,
            u"The file has texts that are gone from %1."_s.arg(QFileInfo(path).fileName()));
}

void AuthorTranslations::checkLocale(const AuthorPackage& package, const QString& locale)
{
    const PackageFacts facts = m_facts.value(package.name);
    const QString name = QLocale(locale).name();
    const bool isElsewhere =
        std::any_of(facts.search.cbegin(), facts.search.cend(), [&](const QString& other) {
            // One that lies beside those that are checked is not looked into.
            const bool isBeside =
                m_packages.named(other).isEmpty() && !m_packages.pathsOf(other).isEmpty();
            return isBeside || m_facts.value(other).locales.contains(name);
        });
    if (facts.isTranslating && !facts.locales.contains(name) && !isElsewhere)
        m_findings.add(package.path, {}, u"l10n-missing"_s,
                       u"The package has no translation for %1."_s.arg(name),
                       u"\"vidlets strings --locale %1\" begins one."_s.arg(name));
}

void AuthorTranslations::broken(const QString& path, XmlPosition position, const QString& message,
                                const QString& help)
{
    m_findings.add(path, position, u"l10n-broken"_s, message, help);
}

} // namespace Vidlets
