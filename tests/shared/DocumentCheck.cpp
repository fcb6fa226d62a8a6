// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "DocumentCheck.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSet>

using namespace Qt::StringLiterals;

namespace DocumentCheck {

namespace {

/// A block of code in a page.
struct Block
{
    QString language;
    int line = 0; ///< Of its fence, from 1.
    QStringList lines;
};

/// A relative link of a page.
struct Link
{
    QString file; ///< Absolute; the page itself where only a heading is named.
    QString heading;
};

QString textOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

/// The files below @p root that fit one of @p patterns, without what is built or hidden.
QStringList filesBelow(const QString& root, const QStringList& patterns)
{
    QStringList files;
    const QDir top(root);
    QDirIterator iterator(root, patterns, QDir::Files, QDirIterator::Subdirectories);
    while (iterator.hasNext()) {
        const QString path = iterator.next();
        if (!top.relativeFilePath(path).startsWith("build/"_L1))
            files += path;
    }
    files.sort();
    return files;
}

QStringList pagesBelow(const QString& root)
{
    return filesBelow(root, {u"*.md"_s});
}

/// All that @p pattern captures in @p text, in order.
QStringList captured(const QString& text, const QString& pattern)
{
    QStringList found;
    QRegularExpressionMatchIterator matches = QRegularExpression(pattern).globalMatch(text);
    while (matches.hasNext())
        found += matches.next().captured(1);
    return found;
}

/// The lines that are not empty, without their indentation.
QStringList essence(const QStringList& lines)
{
    QStringList result;
    for (const QString& line : lines) {
        if (!line.trimmed().isEmpty())
            result += line.trimmed();
    }
    return result;
}

QList<Block> blocksOf(const QString& page)
{
    QList<Block> blocks;
    bool isInside = false;
    int number = 0;
    const QStringList lines = textOf(page).split(u'\n');
    for (const QString& line : lines) {
        ++number;
        if (line.startsWith("```"_L1)) {
            isInside = !isInside;
            if (isInside)
                blocks += Block{line.mid(3).trimmed(), number, {}};
        } else if (isInside) {
            blocks.last().lines += line;
        }
    }
    return blocks;
}

QString withoutBlocks(const QString& text)
{
    static const QRegularExpression blocks(u"^```.*?^```"_s,
                                           QRegularExpression::MultilineOption
                                               | QRegularExpression::DotMatchesEverythingOption);
    return QString(text).remove(blocks);
}

QList<Link> linksOf(const QString& page)
{
    QList<Link> links;
    const QStringList targets = captured(withoutBlocks(textOf(page)), u"\\]\\(([^)\\s]+)\\)"_s);
    for (const QString& target : targets) {
        if (target.contains("://"_L1))
            continue;
        const QString name = target.section(u'#', 0, 0);
        const QString file =
            name.isEmpty() ? page : QDir::cleanPath(QFileInfo(page).path() + u'/' + name);
        links += Link{file, target.section(u'#', 1)};
    }
    return links;
}

/// What a heading is called in links to it.
QString anchorOf(const QString& heading)
{
    static const QRegularExpression dropped(u"[^\\w\\- ]"_s,
                                            QRegularExpression::UseUnicodePropertiesOption);
    return heading.toLower().remove(dropped).replace(u' ', u'-');
}

bool hasHeading(const QString& page, const QString& anchor)
{
    const QStringList headings =
        captured(u'\n' + withoutBlocks(textOf(page)), u"\\n#+ +([^\\n]+)"_s);
    for (const QString& heading : headings) {
        if (anchorOf(heading.trimmed()) == anchor)
            return true;
    }
    return false;
}

bool containsRun(const QStringList& lines, const QStringList& run)
{
    for (qsizetype start = 0; start + run.size() <= lines.size(); ++start) {
        if (lines.mid(start, run.size()) == run)
            return true;
    }
    return false;
}

/// A file of CMake is quoted line by line: an example has more around each of them.
bool isQuoted(const Block& block, const QList<QStringList>& sources)
{
    const QStringList wanted = essence(block.lines);
    for (const QStringList& source : sources) {
        if (block.language != "cmake"_L1) {
            if (containsRun(source, wanted))
                return true;
            continue;
        }
        const QSet<QString> known(source.begin(), source.end());
        if (known.contains(QSet<QString>(wanted.begin(), wanted.end())))
            return true;
    }
    return false;
}

/// The patterns of the files that a block in @p language may stand in; none where it need not.
QStringList sourcesOf(const QString& language)
{
    if (language == "cpp"_L1)
        return {u"*.cpp"_s, u"*.h"_s};
    if (language == "qml"_L1)
        return {u"*.qml"_s};
    if (language == "xml"_L1)
        return {u"*.xml"_s, u"*.ts"_s};
    if (language == "cmake"_L1)
        return {u"CMakeLists.txt"_s};
    return {};
}

QList<QStringList> essenceOfFiles(const QString& directory, const QStringList& patterns)
{
    QList<QStringList> result;
    const QStringList files = filesBelow(directory, patterns);
    for (const QString& file : files)
        result += essence(textOf(file).split(u'\n'));
    return result;
}

/// The examples, and what authors begin with.
QList<QStringList> sources(const QString& root, const QStringList& patterns)
{
    return essenceOfFiles(root + u"/examples"_s, patterns)
        + essenceOfFiles(root + u"/tools/vidlets/template"_s, patterns);
}

} // namespace

QStringList unknownTests(const QString& root)
{
    QStringList findings;
    const QStringList names =
        captured(textOf(root + u"/docs/behaviour.md"_s), u"`(tst_\\w+:\\s+\\w+)`"_s);
    for (const QString& name : names) {
        const QString program = name.section(u':', 0, 0);
        const QString function = name.section(u':', 1).trimmed();
        const QStringList sources = filesBelow(root + u"/tests"_s, {program + u".cpp"_s});
        const QString definition = u"::%1()"_s.arg(function);
        if (sources.isEmpty() || !textOf(sources.first()).contains(definition))
            findings += u"docs/behaviour.md: no test %1: %2"_s.arg(program, function);
    }
    return findings;
}

QStringList missingSettings(const QString& root)
{
    const QStringList keys =
        captured(textOf(root + u"/Vidlets/VLContext.h"_s), u"\\n\\s+(ck\\w+) *= *\\d+"_s);
    // The key has the second column of its table.
    const QStringList rows =
        captured(textOf(root + u"/docs/host-guide.md"_s), u"\\n\\|[^|\\n]*\\| `(ck\\w+)` \\|"_s);
    QStringList findings;
    for (const QString& key : keys) {
        if (!rows.contains(key))
            findings += u"docs/host-guide.md: no row for %1"_s.arg(key);
    }
    for (const QString& row : rows) {
        if (!keys.contains(row))
            findings += u"docs/host-guide.md: no setting %1"_s.arg(row);
    }
    if (keys.isEmpty())
        findings += u"Vidlets/VLContext.h: no keys"_s;
    return findings;
}

QStringList missingWorkbenchKeys(const QString& root)
{
    const QString package = root + u"/examples/workbench/packages/Workbench.vidlets/Control"_s;
    const QString guide = textOf(root + u"/docs/author-guide.md"_s);
    QSet<QString> reported;
    QStringList findings;
    const QStringList files = filesBelow(package, {u"*.xml"_s});
    for (const QString& file : files) {
        const QStringList keys = captured(textOf(file), u"<vidlet\\s[^>]*?\\bkey=\"([^\"]+)\""_s);
        for (const QString& key : keys) {
            if (guide.contains(u"`%1`"_s.arg(key)) || reported.contains(key))
                continue;
            reported += key;
            findings += u"docs/author-guide.md: the key %1 is not listed"_s.arg(key);
        }
    }
    return findings;
}

QStringList unlinkedPages(const QString& root)
{
    QSet<QString> reached;
    QStringList open = {QDir::cleanPath(root + u"/README.md"_s)};
    while (!open.isEmpty()) {
        const QString page = open.takeFirst();
        if (reached.contains(page) || !page.endsWith(".md"_L1))
            continue;
        reached += page;
        const QList<Link> links = linksOf(page);
        for (const Link& link : links)
            open += link.file;
    }
    QStringList findings;
    const QStringList pages = pagesBelow(root);
    for (const QString& page : pages) {
        if (!reached.contains(QDir::cleanPath(page)))
            findings += u"%1: no page links to it"_s.arg(QDir(root).relativeFilePath(page));
    }
    return findings;
}

QStringList brokenLinks(const QString& root)
{
    QStringList findings;
    const QStringList pages = pagesBelow(root);
    for (const QString& page : pages) {
        const QString name = QDir(root).relativeFilePath(page);
        const QList<Link> links = linksOf(page);
        for (const Link& link : links) {
            const QString target = QDir(root).relativeFilePath(link.file);
            if (!QFileInfo::exists(link.file))
                findings += u"%1: there is no %2"_s.arg(name, target);
            else if (!link.heading.isEmpty() && !hasHeading(link.file, link.heading))
                findings += u"%1: there is no %2#%3"_s.arg(name, target, link.heading);
        }
    }
    return findings;
}

QStringList unquotedBlocks(const QString& root)
{
    QStringList findings;
    const QStringList pages = pagesBelow(root);
    for (const QString& page : pages) {
        const QString name = QDir(root).relativeFilePath(page);
        // The examples of the rules for authors are tested as they stand.
        if (name.startsWith("docs/rules/"_L1))
            continue;
        const QList<Block> blocks = blocksOf(page);
        for (const Block& block : blocks) {
            const QStringList patterns = sourcesOf(block.language);
            if (patterns.isEmpty())
                findings += u"%1:%2: a block of unknown language"_s.arg(name).arg(block.line);
            else if (!isQuoted(block, sources(root, patterns)))
                findings += u"%1:%2: the block is in no example"_s.arg(name).arg(block.line);
        }
    }
    return findings;
}

QStringList unbuiltExamples(const QString& root)
{
    const QDir examples(root + u"/examples"_s);
    const QStringList built = captured(textOf(examples.filePath(u"CMakeLists.txt"_s)),
                                       u"add_subdirectory\\(([^)]+)\\)"_s);
    QStringList findings;
    const QStringList files = filesBelow(examples.path(), {u"*.cpp"_s});
    for (const QString& file : files) {
        const QString name = examples.relativeFilePath(file);
        if (!built.contains(name.section(u'/', 0, 0)))
            findings += u"examples/%1: is not built"_s.arg(name);
    }
    return findings;
}

} // namespace DocumentCheck
