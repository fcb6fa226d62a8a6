// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "AuthorQmllint.h"

#include "AuthorFiles.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLibraryInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <algorithm>
#include <utility>

#ifdef Q_OS_UNIX
#include <sys/resource.h>
#endif

using namespace Qt::StringLiterals;

/// A resource of a static library is left out of the program unless it is named.
static void loadTypes()
{
    Q_INIT_RESOURCE(vidlets_types);
}

namespace Vidlets {

namespace {

constexpr int kLimitMs = 30'000;
// For each scene beside the first that are looked at together.
constexpr int kFurtherMs = 1'000;
// For what did not answer in the first place, and may well not answer again.
constexpr int kLessPatience = 3;
// For all scenes, whatever they are.
constexpr int kOverallMs = 300'000;
// Nobody asks what takes less.
constexpr qint64 kSilentMs = 2'000;
// A command line has only so much room.
constexpr qsizetype kMostAtOnce = 200;

QString ownModule()
{
    return u"com.larkspan.vidlets.qml"_s;
}

/// A program that takes all memory or fills the disk harms more than itself.
void limitResources(QProcess& process)
{
#ifdef Q_OS_UNIX
    process.setChildProcessModifier([] {
        constexpr rlim_t kMemoryBytes = rlim_t(4) << 30U;
        constexpr rlim_t kFileBytes = rlim_t(64) << 20U;
        const rlimit memory{kMemoryBytes, kMemoryBytes};
        const rlimit file{kFileBytes, kFileBytes};
        const rlimit core{0, 0};
        setrlimit(RLIMIT_AS, &memory);
        setrlimit(RLIMIT_FSIZE, &file);
        setrlimit(RLIMIT_CORE, &core);
    });
#endif
}

bool write(const QString& path, const QByteArray& content)
{
    QFile file(path);
    return QDir().mkpath(QFileInfo(path).path()) && file.open(QIODevice::WriteOnly)
        && file.write(content) == content.size();
}

/// What qmllint would do about it.
QString suggestionIn(const QJsonObject& warning)
{
    const QJsonArray suggestions = warning.value("suggestions"_L1).toArray();
    for (const auto& suggestion : suggestions) {
        QString message = suggestion.toObject().value("message"_L1).toString();
        if (message.startsWith("Did you mean"_L1))
            return message;
    }
    return QString();
}

} // namespace

AuthorQmllint::AuthorQmllint(AuthorFindings& findings)
    : m_findings(findings)
    , m_directory(std::make_unique<QTemporaryDir>())
    , m_root(QFileInfo(m_directory->path()).canonicalFilePath())
    , m_limitMs(kLimitMs)
{
}

AuthorQmllint::~AuthorQmllint() = default;

QString AuthorQmllint::find()
{
    // Qt's own folders are not in the path on Debian.
    const QString wanted = qEnvironmentVariable("VIDLETS_QMLLINT");
    const QStringList candidates = !wanted.isEmpty()
        ? QStringList{wanted}
        : QStringList{QLibraryInfo::path(QLibraryInfo::BinariesPath) + u"/qmllint"_s,
                      QLibraryInfo::path(QLibraryInfo::LibraryExecutablesPath) + u"/qmllint"_s,
                      u"/usr/lib/qt6/bin/qmllint"_s, u"qmllint6"_s, u"qmllint"_s};
    for (const QString& candidate : candidates) {
        QString program = QStandardPaths::findExecutable(candidate);
        if (!program.isEmpty())
            return program;
    }
    return QString();
}

void AuthorQmllint::add(const QString& path, const QString& place, const AuthorSceneOutline& scene)
{
    Copy copy{path, scene.text(), {}, {}};
    if (path.endsWith(".qml"_L1))
        copy.insertion = insertionFor(scene);
    for (const AuthorSceneOutline::Member& member : scene.members()) {
        if (member.name == "id"_L1)
            copy.ids.insert(scene.at(member.first + 2).toString());
    }
    QString text = scene.text();
    if (copy.insertion.offset >= 0)
        text.insert(copy.insertion.offset, copy.insertion.text);
    const QString file = m_root + u"/scenes/"_s + place;
    if (!m_directory->isValid() || !write(file, text.toUtf8()))
        return;
    // Behind the number of the data path and the name of the package.
    const QString below = place.section(u'/', 2);
    if (!below.isEmpty() && path.endsWith(below))
        m_packages.insert(file.chopped(below.size()), path.chopped(below.size()));
    m_copies.insert(file, copy);
    m_files.append(file);
}

/// The names that scenes are given are described as part of the library's module, which has to be
/// the last that is imported.
AuthorQmllint::Insertion AuthorQmllint::insertionFor(const AuthorSceneOutline& scene)
{
    using Member = AuthorSceneOutline::Member;
    const QList<Member>& members = scene.members();
    const auto isImport = [](const Member& member) { return member.kind == Member::Kind::Import; };
    const auto last = std::find_if(members.crbegin(), members.crend(), isImport);
    if (last == members.crend())
        return {{1, 1}, 0, u"import %1 1.0; "_s.arg(ownModule())};
    qsizetype token = last->end - 1;
    while (token > last->first && scene.at(token) == ";"_L1)
        --token;
    QString name;
    bool isNamed = false;
    for (qsizetype i = last->first + 1; i <= token; ++i) {
        isNamed = isNamed || scene.at(i) == "as"_L1;
        name += scene.at(i);
    }
    if (name.startsWith(ownModule()) && !isNamed)
        return {};
    const qsizetype end = scene.tokens().at(token).end;
    const qsizetype line = scene.text().lastIndexOf(u'\n', end - 1) + 1;
    return {{scene.tokens().at(token).position.line, end - line + 1},
            end,
            u"; import %1 1.0"_s.arg(ownModule())};
}

void AuthorQmllint::check(const QString& program)
{
    m_program = program;
    if (m_files.isEmpty())
        return;
    if (!writeTypes()) {
        unanswered(m_files, u"no temporary file can be written"_s);
        return;
    }
    m_end.setRemainingTime(kOverallMs);
    for (qsizetype i = 0; i < m_files.size(); i += kMostAtOnce)
        lint(m_files.mid(i, kMostAtOnce), m_limitMs);
}

bool AuthorQmllint::writeTypes()
{
    loadTypes();
    const QDir source(u":/vidlets/types"_s);
    QDirIterator it(source.path(), QDir::Files, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        QFile file(it.next());
        const QString target = m_root + u"/types/"_s + source.relativeFilePath(file.fileName());
        if (!file.open(QIODevice::ReadOnly) || !write(target, file.readAll()))
            return false;
    }
    // The nearest settings count, be they empty. To have it ignore all settings makes qmllint 6.4
    // ignore where the types are as well.
    return QDir().mkpath(m_root + u"/work"_s) && write(m_root + u"/.qmllint.ini"_s, "[General]\n");
}

/// One scene may keep qmllint from answering, and is looked for by halves.
void AuthorQmllint::lint(const QStringList& files, int limitMs)
{
    const qint64 wholeLimitMs =
        std::min<qint64>(limitMs + kFurtherMs * (files.size() - 1), m_end.remainingTime());
    if (wholeLimitMs <= 0) {
        unanswered(files, u"the scenes before it have taken too long"_s);
        return;
    }
    QByteArray report;
    if (run(files, wholeLimitMs, report) && take(report, files))
        return;
    if (files.size() == 1) {
        unanswered(files, u"the program failed or took too long"_s);
        return;
    }
    lint(files.mid(0, files.size() / 2), m_limitMs / kLessPatience);
    lint(files.mid(files.size() / 2), m_limitMs / kLessPatience);
}

bool AuthorQmllint::run(const QStringList& files, qint64 limitMs, QByteArray& report)
{
    const QString path = m_root + u"/report.json"_s;
    QFile::remove(path);
    QProcess process;
    // It takes a list of modules from the directory where it runs.
    process.setWorkingDirectory(m_root + u"/work"_s);
    process.setStandardInputFile(QProcess::nullDevice());
    process.setStandardOutputFile(QProcess::nullDevice());
    process.setStandardErrorFile(QProcess::nullDevice());
    limitResources(process);
    process.start(m_program, QStringList{u"--json"_s, path, u"-I"_s, m_root + u"/types"_s} + files);
    if (!waitFor(process, limitMs, files.size())) {
        process.kill();
        process.waitForFinished();
        return false;
    }
    QString reason;
    const auto content = AuthorFiles::read(path, reason);
    report = content.value_or(QByteArray());
    return process.exitStatus() == QProcess::NormalExit && content.has_value();
}

bool AuthorQmllint::waitFor(QProcess& process, qint64 limitMs, qsizetype scenes)
{
    const qint64 silentMs = std::min(limitMs, kSilentMs);
    if (process.waitForFinished(static_cast<int>(silentMs)))
        return true;
    // Also where the program could not be started.
    if (process.state() == QProcess::NotRunning)
        return false;
    if (const OnWait onWait = std::exchange(m_onWait, nullptr))
        onWait(scenes);
    return process.waitForFinished(static_cast<int>(limitMs - silentMs));
}

/// Takes over what a report says, where it is one of all @p files.
bool AuthorQmllint::take(const QByteArray& report, const QStringList& files)
{
    const QJsonArray entries = QJsonDocument::fromJson(report).object().value("files"_L1).toArray();
    if (entries.size() != files.size())
        return false;
    const bool isKnown = std::all_of(entries.cbegin(), entries.cend(), [this](const auto& entry) {
        return m_copies.contains(entry.toObject().value("filename"_L1).toString());
    });
    if (!isKnown)
        return false;
    for (const auto& value : entries) {
        const QJsonObject entry = value.toObject();
        const Copy& copy = *m_copies.constFind(entry.value("filename"_L1).toString());
        const QStringList lines = copy.text.split(u'\n');
        const QJsonArray warnings = entry.value("warnings"_L1).toArray();
        QSet<QByteArray> known;
        for (const auto& warning : warnings) {
            // Some are told several times over.
            const QByteArray text = QJsonDocument(warning.toObject()).toJson();
            if (!known.contains(text))
                take(copy, warning.toObject(), lines);
            known.insert(text);
        }
        if (warnings.isEmpty() && !entry.value("success"_L1).toBool(true))
            m_findings.add(copy.path, {}, u"scene-broken"_s, u"The scene cannot be read."_s);
    }
    return true;
}

void AuthorQmllint::take(const Copy& copy, const QJsonObject& warning, const QStringList& lines)
{
    XmlPosition position{warning.value("line"_L1).toInt(), warning.value("column"_L1).toInt()};
    if (isInserted(copy, position))
        return;
    QString message = warning.value("message"_L1).toString().trimmed();
    if (isLetPass(copy, message, lines.value(position.line - 1), position.column - 1))
        return;
    message = withOwnPaths(message);
    if (!message.endsWith(u'.') && !message.endsWith(u'?'))
        message += u'.';
    const QString type = warning.value("type"_L1).toString();
    const QString rule = type == "critical"_L1 || type == "error"_L1 ? u"scene-broken"_s
        : type == "info"_L1                                          ? u"scene-hint"_s
                                                                     : u"scene-lint"_s;
    m_findings.add(copy.path, position, rule, message, suggestionIn(warning));
}

/// A message in which scenes lie where the author has them.
QString AuthorQmllint::withOwnPaths(QString message) const
{
    const QString scenes = m_root + u"/scenes/"_s;
    if (!message.contains(scenes))
        return message;
    for (auto it = m_packages.cbegin(); it != m_packages.cend(); ++it)
        message.replace(it.key(), it.value());
    return message.remove(scenes);
}

/// Whether a place is in what the scene does not have; else it is made one in the scene.
bool AuthorQmllint::isInserted(const Copy& copy, XmlPosition& position)
{
    const Insertion& insertion = copy.insertion;
    if (insertion.offset < 0 || position.line != insertion.position.line
        || position.column < insertion.position.column)
        return false;
    if (position.column < insertion.position.column + insertion.text.size())
        return true;
    position.column -= insertion.text.size();
    return false;
}

/// What is no fault, but cannot be described to qmllint.
bool AuthorQmllint::isLetPass(const Copy& copy, const QString& message, const QString& line,
                              qsizetype at)
{
    static const QRegularExpression word(u"\\G\\w+"_s,
                                         QRegularExpression::UseUnicodePropertiesOption);
    static const QRegularExpression state(
        u":\\s*VLVideoComponent\\.(resetState|pausedState|playingState)\\b"_s);
    // Debian 12 has one of these files in a package for compiling alone; Qt takes its own copy.
    if (message.startsWith("Failed to find the following builtins"_L1)
        || message.startsWith("Warnings occurred while importing base modules"_L1))
        return true;
    if (at < 0 || at >= line.size())
        return false;
    // Names that a scene is given do not count as use of the module that describes them.
    if (message.startsWith("Unused import"_L1) && line.contains(ownModule()))
        return true;
    const QString name = word.match(line, at).captured();
    // A delegate may name what stands around it in its own file, of which Qt can be told only from
    // 6.5 on.
    if (message == "Unqualified access"_L1)
        return copy.ids.contains(name);
    // A function, which Qt 6.4 describes as a value.
    if (name == "callLater"_L1)
        return message.contains("QJSValue"_L1);
    // Known in this place alone, since they begin with a small letter.
    return message.contains("VLVideoComponent"_L1) && message.contains(name)
        && state.match(line).hasMatch();
}

void AuthorQmllint::unanswered(const QStringList& files, const QString& reason)
{
    for (const QString& file : files)
        m_findings.add(m_copies.value(file).path, {}, u"scene-unchecked"_s,
                       u"qmllint says nothing of the scene: %1."_s.arg(reason));
}

} // namespace Vidlets
