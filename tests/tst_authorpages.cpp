// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "PackageBuilder.h"
#include "VidletsTest.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QProcessEnvironment>
#include <QRegularExpression>

using namespace Qt::StringLiterals;

namespace {

struct Outcome
{
    int code = -1;
    QString out;
    QString err;
};

Outcome run(const QString& program, const QStringList& arguments,
            const QString& directory = QString())
{
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    // What is loaded before a test for its own sake is none of the program's business.
    environment.remove(u"LD_PRELOAD"_s);
    environment.insert(u"MANWIDTH"_s, u"100"_s);
    process.setProcessEnvironment(environment);
    process.setWorkingDirectory(directory);
    process.start(program, arguments);
    if (!process.waitForFinished() || process.exitStatus() != QProcess::NormalExit)
        return {-1, QString(), process.errorString()};
    return {process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError())};
}

QString help(const QStringList& arguments)
{
    return run(QStringLiteral(PROGRAM), arguments + QStringList{u"--help"_s}).out;
}

/// The first words of the lines of a section of a help.
QStringList wordsOf(const QString& text, const QString& section)
{
    static const QRegularExpression word(u"^ {2}(\\S+)"_s, QRegularExpression::MultilineOption);
    const qsizetype begin = text.indexOf(u'\n' + section + u":\n"_s);
    const qsizetype end = text.indexOf(u"\n\n"_s, begin);
    QStringList words;
    QRegularExpressionMatchIterator it = word.globalMatch(text.mid(begin, end - begin));
    while (it.hasNext())
        words.append(it.next().captured(1));
    return words;
}

QStringList commands()
{
    return wordsOf(help({}), u"Commands"_s);
}

/// The options of a command, each by each of its names.
QStringList optionsOf(const QString& command)
{
    static const QRegularExpression name(u"^ {2}(?:(-\\w), )?(--?[\\w-]+)"_s,
                                         QRegularExpression::MultilineOption);
    QStringList options;
    QRegularExpressionMatchIterator it = name.globalMatch(help({command}));
    while (it.hasNext()) {
        const QRegularExpressionMatch match = it.next();
        if (!match.captured(1).isEmpty())
            options.append(match.captured(1));
        options.append(match.captured(2));
    }
    return options;
}

QString completion(const QString& name)
{
    return QStringLiteral(PAGES) + u"/completion/"_s + name;
}

QString manual(const QString& name)
{
    return QStringLiteral(PAGES) + u"/man/"_s + name + u".1"_s;
}

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// What bash offers for the last of some words.
QStringList offeredByBash(const QStringList& words)
{
    const QString script =
        u"source '%1'; COMP_WORDS=(\"$@\"); COMP_CWORD=$(($# - 1)); _vidlets; "
        "printf '%s\\n' \"${COMPREPLY[@]}\""_s.arg(completion(u"vidlets.bash"_s));
    const Outcome outcome =
        run(u"bash"_s, QStringList{u"-c"_s, script, u"bash"_s, u"vidlets"_s} + words);
    return outcome.out.split(u'\n', Qt::SkipEmptyParts);
}

QStringList offeredByFish(const QString& line)
{
    PackageBuilder files;
    const Outcome outcome =
        run(u"env"_s,
            {u"HOME="_s + files.dataPath(), u"fish"_s, u"--no-config"_s, u"-c"_s,
             u"source '%1'; complete -C '%2'"_s.arg(completion(u"vidlets.fish"_s), line)});
    QStringList words;
    const QStringList lines = outcome.out.split(u'\n', Qt::SkipEmptyParts);
    for (const QString& offer : lines)
        words.append(offer.section(u'\t', 0, 0));
    return words;
}

} // namespace

class TestAuthorPages : public VidletsTest
{
    Q_OBJECT

private Q_SLOTS:
    void manual_isThereForEachCommand();
    void completion_isSoundForItsShell_data();
    void completion_isSoundForItsShell();
    void bash_offersEachCommandAndOption();
    void bash_offersValues();
    void zsh_offersEachCommandAndOption();
    void fish_offersEachCommandAndOption();
    void editorSettings_areJson();
    void snippets_areTipsThatWork();
    void workflow_checksAndShowsWhatIsFound();
};

void TestAuthorPages::manual_isThereForEachCommand()
{
    const QByteArray overview = contentOf(manual(u"vidlets"_s));
    QVERIFY(commands().contains(u"check"_s));
    for (const QString& command : commands() + QStringList{QString()}) {
        const QString name = command.isEmpty() ? u"vidlets"_s : u"vidlets-"_s + command;
        QVERIFY2(overview.contains(command.toUtf8()), qPrintable(command));
        const Outcome checked = run(
            u"man"_s,
            {u"--warnings"_s, u"-E"_s, u"UTF-8"_s, u"-l"_s, u"-Tutf8"_s, u"-Z"_s, manual(name)});
        QCOMPARE(checked.err, QString());
        QCOMPARE(checked.code, 0);
        const Outcome read =
            run(u"bash"_s, {u"-c"_s, u"man -l -Tascii '%1' | col -bx"_s.arg(manual(name))});
        for (const QString& option : optionsOf(command))
            QVERIFY2(read.out.contains(option), qPrintable(name + u' ' + option));
        const Outcome listed = run(u"lexgrog"_s, {manual(name)});
        QVERIFY2(listed.out.contains(u'"' + name + u" - "_s), qPrintable(listed.out));
    }
}

void TestAuthorPages::completion_isSoundForItsShell_data()
{
    QTest::addColumn<QString>("shell");
    QTest::addColumn<QString>("file");

    QTest::newRow("bash") << u"bash"_s << u"vidlets.bash"_s;
    QTest::newRow("zsh") << u"zsh"_s << u"_vidlets"_s;
    QTest::newRow("fish") << u"fish"_s << u"vidlets.fish"_s;
}

void TestAuthorPages::completion_isSoundForItsShell()
{
    QFETCH(const QString, shell);
    QFETCH(const QString, file);

    const Outcome outcome = run(shell, {u"-n"_s, completion(file)});

    QCOMPARE(outcome.err, QString());
    QCOMPARE(outcome.code, 0);
}

void TestAuthorPages::bash_offersEachCommandAndOption()
{
    const QStringList known = offeredByBash({u""_s});
    for (const QString& command : commands()) {
        QVERIFY2(known.contains(command), qPrintable(command));
        QStringList offered = offeredByBash({command, u"-"_s});
        QStringList wanted = optionsOf(command);
        offered.sort();
        wanted.sort();
        QVERIFY(!wanted.isEmpty());
        QCOMPARE(offered, wanted);
    }
}

void TestAuthorPages::bash_offersValues()
{
    const QStringList formats{u"text"_s, u"json"_s, u"sarif"_s, u"junit"_s};
    QCOMPARE(offeredByBash({u"check"_s, u"--format"_s, u""_s}), formats);
    QCOMPARE(offeredByBash({u"check"_s, u"--format"_s, u"="_s, u"s"_s}), QStringList{u"sarif"_s});
    QCOMPARE(offeredByBash({u"check"_s, u"--set"_s, u"xml-b"_s}), QStringList{u"xml-broken="_s});
    QCOMPARE(offeredByBash({u"check"_s, u"--set"_s, u"xml-broken"_s, u"="_s, u"n"_s}),
             QStringList{u"note"_s});
    const QStringList rules = offeredByBash({u"check"_s, u"--explain"_s, u""_s});
    QCOMPARE(rules.size(), QDir(QStringLiteral(RULES)).entryList({u"*-*.md"_s}).size());
}

void TestAuthorPages::zsh_offersEachCommandAndOption()
{
    const QByteArray script = contentOf(completion(u"_vidlets"_s));
    QVERIFY(script.startsWith("#compdef vidlets\n"));
    for (const QString& command : commands()) {
        QVERIFY2(script.contains("'" + command.toUtf8() + ":"), qPrintable(command));
        const qsizetype begin = script.indexOf("        " + command.toUtf8() + ")\n");
        const QByteArray part = script.mid(begin, script.indexOf(";;", begin) - begin);
        QVERIFY(begin > 0);
        for (const QString& option : optionsOf(command))
            QVERIFY2(part.contains(option.toUtf8() + '['), qPrintable(command + u' ' + option));
    }
}

void TestAuthorPages::fish_offersEachCommandAndOption()
{
    const QStringList known = offeredByFish(u"vidlets "_s);
    for (const QString& command : commands()) {
        QVERIFY2(known.contains(command), qPrintable(command));
        const QStringList offered = offeredByFish(u"vidlets %1 --"_s.arg(command));
        for (const QString& option : optionsOf(command)) {
            if (option.startsWith("--"_L1))
                QVERIFY2(offered.contains(option), qPrintable(command + u' ' + option));
        }
    }
    QVERIFY(offeredByFish(u"vidlets check --format "_s).contains(u"sarif"_s));
}

void TestAuthorPages::editorSettings_areJson()
{
    const QDir directory(QStringLiteral(TOOLS "/template/.vscode"));
    const QStringList names = directory.entryList(QDir::Files);
    QVERIFY(names.contains(u"settings.json"_s));
    for (const QString& name : names) {
        QJsonParseError error;
        QJsonDocument::fromJson(contentOf(directory.filePath(name)), &error);
        QVERIFY2(error.error == QJsonParseError::NoError,
                 qPrintable(name + u": "_s + error.errorString()));
    }
    QVERIFY(contentOf(directory.filePath(u"settings.json"_s)).contains("schema/control.xsd"));
    QVERIFY(QFile::exists(QStringLiteral(TOOLS "/schema/control.xsd")));
}

/// Each snippet for XML, with what it offers for its gaps, is a control file in which the check
/// finds no fault, or a part of one.
void TestAuthorPages::snippets_areTipsThatWork()
{
    static const QRegularExpression gap(u"\\$\\{\\d+:([^}]*)\\}"_s);
    const QJsonObject snippets =
        QJsonDocument::fromJson(
            contentOf(QStringLiteral(TOOLS "/template/.vscode/vidlets.code-snippets")))
            .object();
    int count = 0;
    for (const QJsonValue& value : snippets) {
        const QJsonObject snippet = value.toObject();
        if (snippet.value("scope"_L1).toString() != "xml"_L1)
            continue;
        QStringList lines;
        const QJsonValue body = snippet.value("body"_L1);
        const QJsonArray parts = body.isArray() ? body.toArray() : QJsonArray{body};
        for (const QJsonValue& line : parts)
            lines.append(line.toString());
        QString text = lines.join(u'\n').replace(gap, u"\\1"_s);
        if (!text.startsWith("<vidlets"_L1))
            text = u"<vidlets>\n"_s + text + u"\n</vidlets>"_s;
        PackageBuilder files;
        files.write(u"A.vidlets/Control/tips.xml"_s, text.toUtf8());
        const Outcome outcome = run(QStringLiteral(PROGRAM),
                                    {u"check"_s, u"--set"_s, u"resource-missing=off"_s, u"--set"_s,
                                     u"scene-missing=off"_s, files.dataPath()});
        QCOMPARE(outcome.out, QString());
        QCOMPARE(outcome.code, 0);
        ++count;
    }
    QVERIFY(count > 2);
}

/// With its command as it stands there, on a package that is right and on one that is not.
void TestAuthorPages::workflow_checksAndShowsWhatIsFound()
{
    const Outcome read =
        run(u"python3"_s,
            {u"-c"_s,
             u"import sys, yaml\n"
             "steps = yaml.safe_load(open(sys.argv[1]))['jobs']['check']['steps']\n"
             "check = [s for s in steps if s.get('name') == 'Check'][0]['run']\n"
             "show = [s for s in steps if 'upload-sarif' in s.get('uses', '')][0]\n"
             "assert show['if'] == 'always()' and show['with']['sarif_file'] in check\n"
             "print(check)"_s,
             QStringLiteral(TOOLS "/workflow/vidlets-check.yml")});
    QCOMPARE(read.err, QString());
    QVERIFY(read.out.contains("--format sarif"_L1));
    const QString path = QFileInfo(QStringLiteral(PROGRAM)).path();
    const QString script = u"set -e; PATH='%1':$PATH; "_s.arg(path) + read.out;
    PackageBuilder files;
    files.write(u"tips/A.vidlets/Control/tips.xml"_s, "<vidlets/>\n");

    QCOMPARE(run(u"bash"_s, {u"-c"_s, script}, files.dataPath()).code, 0);
    QVERIFY(contentOf(files.path(u"tips.sarif"_s)).contains("\"results\": ["));
    files.write(u"tips/A.vidlets/Control/more.xml"_s, "<vidlets>\n<vidlet/>\n</vidlets>\n");
    QCOMPARE(run(u"bash"_s, {u"-c"_s, script}, files.dataPath()).code, 1);
    QVERIFY(contentOf(files.path(u"tips.sarif"_s)).contains("key-missing"));
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestAuthorPages>(argc, argv);
}

#include "tst_authorpages.moc"
