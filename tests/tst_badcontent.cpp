// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "ChildProcess.h"
#include "ClipWriter.h"
#include "ObjectCensus.h"
#include "PopupStage.h"
#include "VidletsTest.h"
#include <Vidlets/VLVideoComponent.h>
#include <Vidlets/VLVideoSourceFFMPEG.h>

#include <QDir>
#include <QFile>
#include <QMutex>
#include <QMutexLocker>
#include <QQuickItem>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTextStream>

#include <functional>
#include <vector>

#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

using namespace Vidlets;

namespace {

constexpr int kMebibyte = 1024 * 1024;
constexpr int kDeepTags = 10000;
constexpr int kVeryDeepTags = 100000;
constexpr int kBinaryBytes = 4096;
constexpr int kClipFrames = 12;
constexpr int kTimeoutMs = 30000;
const QPoint kPointer(400, 300);

QString badKey()
{
    return u"bad"_s;
}

/// Runs a scope without the rights of root, for whom no file is out of reach.
class Unprivileged
{
public:
    explicit Unprivileged(bool wanted)
        : m_active(wanted && geteuid() == 0)
    {
        constexpr uid_t kNobody = 65534;
        if (m_active && seteuid(kNobody) != 0)
            qFatal("The rights of root could not be given up");
    }
    ~Unprivileged()
    {
        if (m_active && seteuid(getuid()) != 0)
            qFatal("The rights of root could not be taken back");
    }

private:
    Q_DISABLE_COPY_MOVE(Unprivileged)

    bool m_active;
};

/// Keeps what is written to Qt's log, on whatever thread, and passes it on.
class LogCapture
{
public:
    LogCapture()
    {
        lines.clear();
        previous = qInstallMessageHandler(keep);
    }
    ~LogCapture()
    {
        qInstallMessageHandler(previous);
    }

    static qsizetype count(const QString& line)
    {
        const QMutexLocker locker(&mutex);
        return lines.count(line);
    }

private:
    Q_DISABLE_COPY_MOVE(LogCapture)

    static void keep(QtMsgType type, const QMessageLogContext& context, const QString& text)
    {
        {
            const QMutexLocker locker(&mutex);
            lines += text;
        }
        previous(type, context, text);
    }

    static QMutex mutex;
    static QStringList lines;
    static QtMessageHandler previous;
};

QMutex LogCapture::mutex;
QStringList LogCapture::lines;
QtMessageHandler LogCapture::previous = nullptr;

/// A source that decodes on the calling thread, until it goes idle.
class StraightSource : public VLVideoSourceFFMPEG
{
public:
    void decode(const QString& path)
    {
        setSource(QUrl::fromLocalFile(path));
        run();
    }
    void changeSetAction(Action action) override
    {
        VLVideoSourceFFMPEG::changeSetAction(action);
        if (action == ActionIdle)
            setShouldQuit();
    }
};

/// The stage with a second package "bad", whose scene is as good as the one of "tips" to begin
/// with.
class Bench
{
public:
    Bench()
        : stage({{ckMessageLevel, VLMessageDebug}})
    {
        stage.packages.packageRoot(u"bad.vidlets/Control"_s);
        QFile scene(stage.packages.path(u"tips.vidlets/ui/VidletUI.qml"_s));
        if (!scene.open(QIODevice::ReadOnly))
            qFatal("There is no scene to copy");
        writeFile("ui/VidletUI.qml", scene.readAll());
    }
    ~Bench()
    {
        for (const QString& path : std::as_const(m_locked))
            chmod(QFile::encodeName(path).constData(), S_IRWXU);
    }
    Q_DISABLE_COPY_MOVE(Bench)

    QString path(const char* relativePath) const
    {
        return stage.packages.path(u"bad.vidlets/"_s + QString::fromLatin1(relativePath));
    }
    QString controlFile() const
    {
        return path("Control/bad.xml");
    }
    QString writeFile(const char* relativePath, const QByteArray& content)
    {
        return stage.packages.write(u"bad.vidlets/"_s + QString::fromLatin1(relativePath), content);
    }
    void writeControlFile(const QByteArray& content)
    {
        writeFile("Control/bad.xml", content);
    }
    /// Takes all permissions away until the bench goes.
    void lock(const QString& lockedPath)
    {
        if (chmod(QFile::encodeName(lockedPath).constData(), 0) != 0)
            qFatal("Could not lock %s", qPrintable(lockedPath));
        m_locked.prepend(lockedPath);
    }
    bool show(const QString& key)
    {
        return stage.manager->show(key, kPointer, &stage.control);
    }

    PopupStage stage;

private:
    QStringList m_locked;
};

enum class Outcome {
    Found,          ///< The tip of the bad file is shown.
    FoundNoScene,   ///< The tip is taken, and there is no scene to show it with.
    NotFound,       ///< The file counts as not having the key.
    Stale,          ///< The lookup gives the addresses of objects that have gone.
    EndsProcess,    ///< The next lookup ends the process, whatever the key.
    KeysEndProcess, ///< The lookup finds nothing, and listing the keys ends the process.
};

using Step = std::function<void(Bench&)>;
/// Gives what is not as it should be; empty if all is well.
using Examination = std::function<QString(Bench&)>;

struct Fault
{
    const char* name = nullptr;
    Outcome outcome = Outcome::NotFound;
    Step write;           ///< Before the scan.
    Step spoil = nullptr; ///< Between scan and lookup.
    Examination examine = nullptr;
    const char* message = nullptr; ///< What the host is told, as a pattern.
    const char* warning = nullptr; ///< What Qt warns of, as a pattern.
    bool unprivileged = false;
};

using Faults = std::vector<Fault>;

// -- Contents

QByteArray goodTip()
{
    return "<vidlet key=\"bad\" title=\"t\"><p>text <b>more</b></p></vidlet>";
}

QByteArray goodFile()
{
    return "<vidlets>\n" + goodTip() + "\n</vidlets>\n";
}

QByteArray fileWith(const QByteArray& tips)
{
    return "<vidlets>\n" + tips + "\n</vidlets>\n";
}

QByteArray noise()
{
    QRandomGenerator generator(1);
    QByteArray bytes(kBinaryBytes, '\0');
    for (char& byte : bytes)
        byte = static_cast<char>(generator.bounded(256));
    return bytes;
}

QByteArray deepTags(const QByteArray& innermost = QByteArray(), int depth = kDeepTags)
{
    return QByteArray("<a>").repeated(depth) + innermost + QByteArray("</a>").repeated(depth);
}

Step controlFile(const QByteArray& content)
{
    return [content](Bench& bench) { bench.writeControlFile(content); };
}

Step goodControlFile()
{
    return controlFile(goodFile());
}

Step file(const char* path, const QByteArray& content)
{
    return [path, content](Bench& bench) { bench.writeFile(path, content); };
}

Step removeFile(const char* path)
{
    return [path](Bench& bench) { QFile::remove(bench.path(path)); };
}

Step inTurn(const Step& first, const Step& second)
{
    return [first, second](Bench& bench) {
        first(bench);
        second(bench);
    };
}

Step locked(const char* path)
{
    return [path](Bench& bench) { bench.lock(bench.path(path)); };
}

Step keyDataFile(const QByteArray& content)
{
    return inTurn(inTurn(goodControlFile(), file("keys.xml", content)), [](Bench& bench) {
        // The store of the index, which is not the one of the manager.
        bench.stage.index.context().set(ckKeyDataFile, bench.path("keys.xml"));
    });
}

Examination attributeIs(const QString& name, const QString& value)
{
    return [name, value](Bench& bench) {
        const QString given = bench.stage.view()->content()->attribute(name);
        return given == value ? QString() : name + u" is "_s + given.left(100);
    };
}

Examination contentIs(const QString& value)
{
    return [value](Bench& bench) {
        const QString given = bench.stage.view()->content()->content();
        return given == value ? QString() : u"content is "_s + given.left(100);
    };
}

/// How many tags lie below each other under the tip.
Examination depthIs(int depth)
{
    return [depth](Bench& bench) {
        int found = 0;
        const QObject* element = bench.stage.view()->content();
        while (!element->children().isEmpty()) {
            element = element->children().constFirst();
            ++found;
        }
        return found == depth ? QString() : u"depth is %1"_s.arg(found);
    };
}

Examination translationGives(const QString& result)
{
    return [result](Bench& bench) {
        const QString given = bench.stage.manager->translateString(u"text"_s, u"context"_s);
        return given == result ? QString() : u"translation is "_s + given;
    };
}

// -- Faults

Faults faultsOfForm()
{
    const QByteArray other = "<vidlet key=\"other\">";
    return {
        {"not XML", Outcome::NotFound, controlFile("A note without any tag.\n")},
        {"another kind of XML", Outcome::NotFound,
         controlFile("<html><vidlets>" + goodTip() + "</vidlets></html>")},
        {"empty", Outcome::NotFound, controlFile("")},
        {"white space alone", Outcome::NotFound, controlFile(" \n\t\n")},
        {"a comment alone", Outcome::NotFound, controlFile("<!-- nothing -->\n")},
        {"binary", Outcome::NotFound, controlFile(noise())},
        {"binary behind the first tag", Outcome::EndsProcess, controlFile("<vidlets>\n" + noise())},
        {"control characters behind the first tag", Outcome::NotFound,
         controlFile("<vidlets>\n" + QByteArray(3, '\1') + goodTip() + "</vidlets>")},
        {"binary in the tip", Outcome::Stale,
         controlFile("<vidlets><vidlet key=\"bad\">" + QByteArray(3, '\0')
                     + "</vidlet></vidlets>")},
        {"binary behind the tip", Outcome::Found,
         controlFile("<vidlets>" + goodTip() + QByteArray(3, '\0') + "</vidlets>")},
        {"text behind the root", Outcome::EndsProcess, controlFile(goodFile() + "more")},
        {"a second root", Outcome::EndsProcess, controlFile(goodFile() + goodFile())},
        {"text before the root", Outcome::EndsProcess, controlFile("more\n" + goodFile())},
        {"end tags crossed in the tip", Outcome::Stale,
         controlFile(fileWith("<vidlet key=\"bad\"><a><b></a></b></vidlet>"))},
        {"end tags crossed behind the tip", Outcome::Stale,
         controlFile(fileWith(goodTip() + other + "</a></vidlet>"))},
        {"end tags crossed before the tip", Outcome::NotFound,
         controlFile(fileWith(other + "</a></vidlet>" + goodTip()))},
        {"an attribute without quotes", Outcome::NotFound,
         controlFile(fileWith("<vidlet key=bad/>"))},
        {"an attribute twice", Outcome::NotFound,
         controlFile(fileWith("<vidlet key=\"bad\" a=\"1\" a=\"2\"/>"))},
        {"a prefix without declaration", Outcome::NotFound,
         controlFile(fileWith("<x:vidlet key=\"bad\"/>"))},
        {"a prefix without declaration in the tip", Outcome::Stale,
         controlFile(fileWith("<vidlet key=\"bad\"><x:a/></vidlet>"))},
        {"an entity without declaration", Outcome::Stale,
         controlFile(fileWith("<vidlet key=\"bad\">&nope;</vidlet>"))},
        {"an entity that grows without bound", Outcome::Stale,
         controlFile("<!DOCTYPE vidlets [\n<!ENTITY a \"aaaaaaaaaaaaaaaa\">\n"
                     "<!ENTITY b \"&a;&a;&a;&a;&a;&a;&a;&a;&a;&a;&a;&a;&a;&a;&a;&a;\">\n"
                     "<!ENTITY c \"&b;&b;&b;&b;&b;&b;&b;&b;&b;&b;&b;&b;&b;&b;&b;&b;\">\n"
                     "<!ENTITY d \"&c;&c;&c;&c;&c;&c;&c;&c;&c;&c;&c;&c;&c;&c;&c;&c;\">\n]>\n"
                     + fileWith("<vidlet key=\"bad\">&d;</vidlet>"))},
    };
}

Faults faultsOfCutting()
{
    const QByteArray next = "<vidlet key=\"next\">";
    return {
        {"cut off in the declaration", Outcome::NotFound, controlFile("<?xml version=\"1.0\" enc")},
        {"cut off in the name of the root", Outcome::NotFound, controlFile("<vidl")},
        {"cut off in the root's attributes", Outcome::EndsProcess,
         controlFile("<vidlets locale=\"en_")},
        {"cut off behind the root's start tag", Outcome::NotFound, controlFile("<vidlets>")},
        {"cut off in a tip before", Outcome::NotFound, controlFile("<vidlets>" + next + "<a>")},
        {"cut off in the name of the tip", Outcome::NotFound, controlFile("<vidlets><vidl")},
        {"cut off in the tip's attributes", Outcome::NotFound,
         controlFile("<vidlets><vidlet key=\"bad\" tit")},
        {"cut off behind the tip's start tag", Outcome::Stale,
         controlFile("<vidlets><vidlet key=\"bad\">")},
        {"cut off in the tip's text", Outcome::Stale,
         controlFile("<vidlets><vidlet key=\"bad\">text")},
        {"cut off one tag below the tip", Outcome::Stale,
         controlFile("<vidlets><vidlet key=\"bad\"><p>text")},
        {"cut off two tags below the tip", Outcome::Stale,
         controlFile("<vidlets><vidlet key=\"bad\"><p><b>text")},
        {"cut off in the tip's end tag", Outcome::Stale,
         controlFile("<vidlets><vidlet key=\"bad\"></vid")},
        {"cut off behind the tip", Outcome::Found, controlFile("<vidlets>" + goodTip())},
        {"cut off in a comment behind the tip", Outcome::Found,
         controlFile("<vidlets>" + goodTip() + "<!-- mo")},
        {"cut off in the attributes of the next tip", Outcome::Found,
         controlFile("<vidlets>" + goodTip() + "<vidlet key=\"ne")},
        {"cut off in the next tip", Outcome::Stale, controlFile("<vidlets>" + goodTip() + next)},
        {"cut off one tag below the next tip", Outcome::Stale,
         controlFile("<vidlets>" + goodTip() + next + "<a>")},
        {"cut off in the root's end tag", Outcome::Found,
         controlFile("<vidlets>" + goodTip() + "</vidl")},
        {"cut off in a comment behind the root", Outcome::EndsProcess,
         controlFile(goodFile() + "<!-- mo")},
    };
}

Faults faultsOfEncoding()
{
    const QByteArray latin = fileWith("<vidlet key=\"bad\">\xE9</vidlet>");
    QByteArray wide("\xFF\xFE", 2);
    const QByteArray narrow = goodFile();
    for (const char c : narrow)
        wide += QByteArray(1, c) + QByteArray(1, '\0');
    const QByteArray declaration = "<?xml version=\"1.0\" encoding=\"%1\"?>\n";
    const auto declared = [declaration](const char* encoding) {
        return QByteArray(declaration).replace("%1", encoding);
    };
    const QString accented(QChar(0xE9));
    return {
        {"a byte order mark", Outcome::Found, controlFile("\xEF\xBB\xBF" + goodFile())},
        {"UTF-16, in which no tag is seen", Outcome::NotFound, controlFile(wide)},
        {"Latin-1 that says so",
         Outcome::Found,
         controlFile(declared("ISO-8859-1") + latin),
         {},
         contentIs(accented)},
        // The reader refuses the first piece of the file as a whole, before any tag.
        {"Latin-1 that does not say so", Outcome::EndsProcess, controlFile(latin)},
        {"Latin-1 that says UTF-8", Outcome::EndsProcess, controlFile(declared("UTF-8") + latin)},
        {"UTF-8 that says UTF-16", Outcome::EndsProcess,
         controlFile(declared("UTF-16") + goodFile())},
        {"Latin-1 far behind the tip", Outcome::Found,
         controlFile(fileWith(goodTip() + "<!--" + QByteArray(kMebibyte, 'x') + "\xE9-->"))},
        {"an encoding that does not exist", Outcome::EndsProcess,
         controlFile(declared("none-such") + goodFile())},
    };
}

Faults faultsOfSize()
{
    const QByteArray large(kMebibyte, 'x');
    const auto largeText = QString::fromLatin1(large);
    return {
        {"an attribute of 1 MB",
         Outcome::Found,
         controlFile(fileWith("<vidlet key=\"bad\" note=\"" + large + "\"/>")),
         {},
         attributeIs(u"note"_s, largeText)},
        {"an attribute of 1 MB on the root", Outcome::Found,
         controlFile("<vidlets note=\"" + large + "\">" + goodTip() + "</vidlets>")},
        {"a key of 1 MB", Outcome::Found,
         controlFile(fileWith("<vidlet key=\"" + large + "\"/>" + goodTip()))},
        {"a line of 1 MB before the root", Outcome::Found,
         controlFile("<!--" + large + "-->\n" + goodFile())},
        {"a text of 1 MB",
         Outcome::Found,
         controlFile(fileWith("<vidlet key=\"bad\">" + large + "</vidlet>")),
         {},
         contentIs(largeText)},
        {"10,000 tips", Outcome::Found,
         controlFile(fileWith(QByteArray("<vidlet key=\"other\"/>").repeated(10000) + goodTip()))},
        {"10,000 nested tags",
         Outcome::Found,
         controlFile(fileWith("<vidlet key=\"bad\">" + deepTags() + "</vidlet>")),
         {},
         depthIs(kDeepTags)},
        {"100,000 nested tags",
         Outcome::Found,
         controlFile(fileWith("<vidlet key=\"bad\">" + deepTags({}, kVeryDeepTags) + "</vidlet>")),
         {},
         depthIs(kVeryDeepTags)},
        {"100,000 nested tags in a tip of another locale", Outcome::NotFound,
         controlFile("<vidlets locale=\"de\"><vidlet key=\"bad\">" + deepTags({}, kVeryDeepTags)
                     + "</vidlet></vidlets>")},
        {"10,000 nested tags in another tip", Outcome::Found,
         controlFile(fileWith("<vidlet key=\"other\">" + deepTags() + "</vidlet>" + goodTip()))},
        {"10,000 nested tags, broken at the innermost", Outcome::Stale,
         controlFile(fileWith("<vidlet key=\"bad\">" + deepTags("<") + "</vidlet>"))},
        {"10,000 nested tags around the tip", Outcome::NotFound,
         controlFile(fileWith(deepTags(goodTip())))},
    };
}

Faults faultsOfMeaning()
{
    return {
        {"a key twice", Outcome::NotFound, controlFile(fileWith(goodTip() + goodTip()))},
        {"a key in another case", Outcome::NotFound,
         controlFile(fileWith("<vidlet key=\"Bad\"/>"))},
        {"a tip below another tag", Outcome::NotFound,
         controlFile(fileWith("<group>" + goodTip() + "</group>"))},
        {"no tip", Outcome::NotFound, controlFile("<vidlets/>")},
        {"a tip without a key", Outcome::NotFound, controlFile(fileWith("<vidlet title=\"t\"/>"))},
        {"a locale that does not exist", Outcome::NotFound,
         controlFile("<vidlets locale=\"nowhere\">" + goodTip() + "</vidlets>")},
        {"a root with a prefix", Outcome::NotFound,
         controlFile("<x:vidlets xmlns:x=\"urn:x\">" + goodTip() + "</x:vidlets>")},
        {"a root split behind its name", Outcome::NotFound,
         controlFile("<vidlets\n>" + goodTip() + "</vidlets>")},
        {"a tag in a comment before the root", Outcome::NotFound,
         controlFile("<!-- <draft> -->\n" + goodFile())},
    };
}

Faults faultsOfFiles()
{
    const auto link = [](const char* target, const char* path) {
        return [target, path](Bench& bench) { QFile::link(bench.path(target), bench.path(path)); };
    };
    const auto directory = [](const char* path) {
        return [path](Bench& bench) { QDir().mkpath(bench.path(path)); };
    };
    const Step noControlDirectory = [](Bench& bench) { QDir().rmdir(bench.path("Control")); };
    return {
        {"a dangling link", Outcome::NotFound, link("none", "Control/bad.xml")},
        {"a link to a good file", Outcome::NotFound,
         inTurn(file("good.txt", goodFile()), link("good.txt", "Control/bad.xml"))},
        {"a dangling link for a package", Outcome::NotFound, link("none", "../gone.vidlets")},
        {"a link to itself", Outcome::NotFound, link("Control/bad.xml", "Control/bad.xml")},
        {"a directory named like a control file", Outcome::NotFound, directory("Control/bad.xml")},
        {"a file named like a package", Outcome::NotFound, file("../gone.vidlets", goodFile())},
        {"a file named like the control directory", Outcome::NotFound,
         inTurn(noControlDirectory, file("Control", goodFile()))},
        {"no control directory", Outcome::NotFound, noControlDirectory},
        {"a good file of another ending", Outcome::NotFound,
         file("Control/bad.xml.orig", goodFile())},
        {"gone between scan and lookup", Outcome::NotFound, goodControlFile(),
         removeFile("Control/bad.xml")},
        {"a package gone between scan and lookup", Outcome::NotFound, goodControlFile(),
         [](Bench& bench) { QDir(bench.path("")).removeRecursively(); }},
        {"a dangling link since the scan", Outcome::NotFound, goodControlFile(),
         inTurn(removeFile("Control/bad.xml"), link("none", "Control/bad.xml"))},
        {"a directory since the scan", Outcome::NotFound, goodControlFile(),
         inTurn(removeFile("Control/bad.xml"), directory("Control/bad.xml"))},
        {"emptied since the scan", Outcome::EndsProcess, goodControlFile(), controlFile("")},
        {"another root since the scan", Outcome::NotFound, goodControlFile(),
         controlFile("<other>" + goodTip() + "</other>")},
        {"another root since the scan, with the keys listed", Outcome::KeysEndProcess,
         goodControlFile(), controlFile("<other>" + goodTip() + "</other>")},
        {"no permission for the control file",
         Outcome::NotFound,
         inTurn(goodControlFile(), locked("Control/bad.xml")),
         {},
         {},
         nullptr,
         nullptr,
         true},
        {"no permission for the control directory",
         Outcome::NotFound,
         inTurn(goodControlFile(), locked("Control")),
         {},
         {},
         nullptr,
         nullptr,
         true},
        {"no permission for the package",
         Outcome::NotFound,
         inTurn(goodControlFile(), locked("")),
         {},
         {},
         nullptr,
         nullptr,
         true},
        {"permission taken since the scan",
         Outcome::NotFound,
         goodControlFile(),
         locked("Control/bad.xml"),
         {},
         nullptr,
         nullptr,
         true},
        {"no permission for the scene",
         Outcome::FoundNoScene,
         goodControlFile(),
         locked("ui/VidletUI.qml"),
         {},
         nullptr,
         "VidletUI\\.qml",
         true},
    };
}

Faults faultsOfScenes()
{
    const auto scene = [](const QByteArray& content) {
        return inTurn(goodControlFile(), file("ui/VidletUI.qml", content));
    };
    const char* const warning = "VidletUI\\.qml";
    return {
        {"no scene",
         Outcome::FoundNoScene,
         goodControlFile(),
         removeFile("ui/VidletUI.qml"),
         {},
         "^Can't find :.*ui/VidletUI\\.qml$"},
        {"a scene that the tip names and that is missing",
         Outcome::FoundNoScene,
         controlFile(fileWith("<vidlet key=\"bad\" ui=\"ui/None.qml\"/>")),
         {},
         {},
         "^Can't find :.*ui/None\\.qml$"},
        {"an empty scene", Outcome::FoundNoScene, scene(""), {}, {}, nullptr, warning},
        {"a broken scene",
         Outcome::FoundNoScene,
         scene("import QtQuick\nRectangle {\n    width: \n"),
         {},
         {},
         nullptr,
         warning},
        {"a binary scene", Outcome::FoundNoScene, scene(noise()), {}, {}, nullptr, warning},
        {"a scene with an unknown module",
         Outcome::FoundNoScene,
         scene("import No.Such.Module\nItem {}\n"),
         {},
         {},
         nullptr,
         warning},
        {"a scene with an unknown type",
         Outcome::FoundNoScene,
         scene("import QtQuick\nNoSuchType {}\n"),
         {},
         {},
         nullptr,
         warning},
        {"a scene that is no item",
         Outcome::FoundNoScene,
         scene("import QtQml\nQtObject {}\n"),
         {},
         {},
         nullptr,
         "QQuickView only supports"},
        {"a scene that is a directory",
         Outcome::FoundNoScene,
         goodControlFile(),
         inTurn(removeFile("ui/VidletUI.qml"),
                [](Bench& bench) { QDir().mkpath(bench.path("ui/VidletUI.qml")); }),
         {},
         nullptr,
         warning},
        {"a scene that throws",
         Outcome::Found,
         scene("import QtQuick\nItem {\n    property string shownKey: vidlet.attribute(\"key\")\n"
               "    width: 10; height: 10\n    Component.onCompleted: none.such()\n}\n"),
         {},
         {},
         "^QML Warning 5:",
         warning},
        {"a scene without a size", Outcome::Found,
         scene("import QtQuick\nItem { property string shownKey: vidlet.attribute(\"key\") }\n")},
    };
}

Faults faultsOfTranslations()
{
    const QByteArray magic = QByteArray::fromHex("3cb86418caef9c95cd211cbf60a1bddd");
    const auto translation = [](const QByteArray& content) {
        return inTurn(goodControlFile(), file("l10n/Vidlets_en_US.qm", content));
    };
    const QString text = u"text"_s;
    return {
        {"no translation file", Outcome::Found, goodControlFile(), {}, translationGives(text)},
        {"an empty translation file", Outcome::Found, translation(""), {}, translationGives(text)},
        {"a translation file that is text",
         Outcome::Found,
         translation("text=Text\n"),
         {},
         translationGives(text)},
        {"a binary translation file",
         Outcome::Found,
         translation(noise()),
         {},
         translationGives(text)},
        {"a translation file cut off behind its head",
         Outcome::Found,
         translation(magic),
         {},
         translationGives(text)},
        {"a translation file that is binary behind its head",
         Outcome::Found,
         translation(magic + noise()),
         {},
         translationGives(text)},
        {"a translation file that is a directory",
         Outcome::Found,
         inTurn(goodControlFile(),
                [](Bench& bench) { QDir().mkpath(bench.path("l10n/Vidlets_en_US.qm")); }),
         {},
         translationGives(text)},
    };
}

Faults faultsOfKeyData()
{
    const QByteArray record = "<key name=\"bad\" title=\"new\"/>";
    const Examination oldTitle = attributeIs(u"title"_s, u"t"_s);
    const Examination newTitle = attributeIs(u"title"_s, u"new"_s);
    return {
        {"no key data file", Outcome::Found, keyDataFile(""), removeFile("keys.xml"), oldTitle},
        {"a key data file that is a directory", Outcome::Found, keyDataFile(""),
         inTurn(removeFile("keys.xml"),
                [](Bench& bench) { QDir().mkpath(bench.path("keys.xml")); }),
         oldTitle},
        {"an empty key data file", Outcome::EndsProcess, keyDataFile("")},
        {"a key data file that is text", Outcome::EndsProcess, keyDataFile("bad=title\n")},
        {"a binary key data file", Outcome::EndsProcess, keyDataFile(noise())},
        {"a key data file of another root",
         Outcome::Found,
         keyDataFile("<other>" + record + "</other>"),
         {},
         oldTitle},
        {"a key data file without the key",
         Outcome::Found,
         keyDataFile("<vidletkeys><key name=\"x\" title=\"new\"/></vidletkeys>"),
         {},
         oldTitle},
        {"a key data file cut off before the record",
         Outcome::Found,
         keyDataFile("<vidletkeys><key name=\"b"),
         {},
         oldTitle},
        {"a key data file cut off in the record",
         Outcome::Found,
         keyDataFile("<vidletkeys><key name=\"bad\" title=\"new\"><a>"),
         {},
         newTitle},
        {"a key data file cut off behind the record",
         Outcome::Found,
         keyDataFile("<vidletkeys>" + record),
         {},
         newTitle},
        {"a key data file with the key twice",
         Outcome::Found,
         keyDataFile("<vidletkeys>" + record + "<key name=\"bad\" title=\"late\"/></vidletkeys>"),
         {},
         newTitle},
        {"a key data file with another attribute of 1 MB",
         Outcome::Found,
         keyDataFile("<vidletkeys><key name=\"bad\" title=\"new\" a=\"" + QByteArray(kMebibyte, 'x')
                     + "\"/></vidletkeys>"),
         {},
         newTitle},
    };
}

// -- Media

/// How many of a clip's pictures come out of a damaged file.
enum class Pictures {
    Unopened, ///< The file is no media.
    NoStream, ///< There is no video in it.
    Some,     ///< Fewer than the whole clip has.
    All,
    Any, ///< It is the decoder's business.
};

constexpr auto kClipName = "Resources/clip";

/// Decodes the clip of the package directly, then in the popup's scene.
Examination picturesAre(Pictures expected)
{
    return [expected](Bench& bench) {
        const QString path = bench.path(kClipName);
        const LogCapture log;
        StraightSource source;
        source.decode(path);
        const auto count = static_cast<int>(source.loadedFrameCount());
        QString line;
        if (expected == Pictures::Unopened)
            line = u"Could not open media at: "_s + path;
        else if (expected == Pictures::NoStream)
            line = u"Could not find a video stream in "_s + path;
        if (!line.isEmpty() && LogCapture::count(line) != 1)
            return u"the line is missing: "_s + line;

        const bool fits = expected == Pictures::All ? count == kClipFrames
            : expected == Pictures::Some            ? count > 0 && count < kClipFrames
            : expected == Pictures::Any             ? count <= kClipFrames
                                                    : count == 0;
        if (!fits)
            return u"there are %1 pictures"_s.arg(count);
        for (int i = 0; i < count; ++i) {
            const QSizeF size = source.getFrame(static_cast<unsigned int>(i)).size();
            if (size != QSizeF(source.frameWidth(), source.frameHeight()))
                return u"picture %1 has another size"_s.arg(i);
        }

        auto* item = bench.stage.scene()->findChild<VLVideoComponent*>();
        item->setSource(u"clip"_s);
        item->setState(VLVideoComponent::playingState);
        const bool seen = QTest::qWaitFor(
            [&] {
                return line.isEmpty() ? count == 0 || item->contentWidth() == source.frameWidth()
                                      : LogCapture::count(line) == 2;
            },
            kTimeoutMs);
        return seen ? QString() : u"the scene does not see the same"_s;
    };
}

Step clipScene()
{
    return inTurn(goodControlFile(),
                  file("ui/VidletUI.qml",
                       "import QtQuick\nimport com.larkspan.vidlets.qml 1.0\nItem {\n"
                       "    property string shownKey: vidlet.attribute(\"key\")\n"
                       "    width: 120; height: 80\n"
                       "    VLVideoComponent { objectName: \"clip\"; anchors.fill: parent }\n}\n"));
}

/// Made only where it is needed: writing a clip takes its time.
using ClipMaker = std::function<QByteArray()>;

Step clip(const ClipMaker& make)
{
    return inTurn(clipScene(), [make](Bench& bench) { bench.writeFile(kClipName, make()); });
}

QByteArray clipBytes(const char* fileName, const char* codec, const char* format,
                     const QSize& size = {64, 48}, int frames = kClipFrames)
{
    ClipWriter clips;
    const QString name = QString::fromLatin1(fileName);
    clips.testClip(name, QString::fromLatin1(codec), size, 25, frames,
                   {u"-bf"_s, u"0"_s, u"-g"_s, u"4"_s, u"-f"_s, QString::fromLatin1(format)});
    return clips.readBytes(name);
}

QByteArray soundBytes()
{
    ClipWriter clips;
    const QString name = u"sound.wav"_s;
    clips.write(name, {u"-f"_s, u"lavfi"_s, u"-i"_s, u"sine=duration=0.1"_s});
    return clips.readBytes(name);
}

QByteArray withFlippedBits(QByteArray bytes)
{
    constexpr qsizetype kStep = 97;
    for (qsizetype i = bytes.size() / 2; i < bytes.size(); i += kStep)
        bytes[i] = static_cast<char>(bytes.at(i) ^ 0x10);
    return bytes;
}

Faults faultsOfMedia()
{
    // Of pictures that depend on no other.
    const ClipMaker avi = [] { return clipBytes("a.avi", "mjpeg", "avi"); };
    const ClipMaker mp4 = [] { return clipBytes("a.mp4", "mpeg4", "mp4"); };
    const ClipMaker mkv = [] { return clipBytes("a.mkv", "mpeg4", "matroska"); };
    const auto bytes = [](const QByteArray& content) {
        return clip([content] { return content; });
    };
    const auto cutAt = [](const ClipMaker& make, double part) {
        return clip([make, part] {
            const QByteArray whole = make();
            return whole.left(static_cast<qsizetype>(part * static_cast<double>(whole.size())));
        });
    };
    const auto noisyBehind = [](const ClipMaker& make, int divisor) {
        return clip([make, divisor] {
            const QByteArray whole = make();
            const qsizetype kept = whole.size() / divisor;
            return whole.left(kept) + noise().repeated(4).left(whole.size() - kept);
        });
    };
    const auto flipped = [](const ClipMaker& make) {
        return clip([make] { return withFlippedBits(make()); });
    };
    const ClipMaker twoSizes = [] {
        return clipBytes("a.mjpeg", "mjpeg", "mjpeg", QSize(64, 48), kClipFrames / 2)
            + clipBytes("b.mjpeg", "mjpeg", "mjpeg", QSize(96, 32), kClipFrames / 2);
    };
    return {
        {"a whole clip", Outcome::Found, clip(avi), {}, picturesAre(Pictures::All)},
        {"a clip of zero size", Outcome::Found, bytes(""), {}, picturesAre(Pictures::Unopened)},
        {"a text named like a clip",
         Outcome::Found,
         bytes("This is no clip at all.\n"),
         {},
         picturesAre(Pictures::Unopened)},
        {"a binary clip",
         Outcome::Found,
         bytes(QByteArray(kBinaryBytes, '\xFF')),
         {},
         picturesAre(Pictures::Unopened)},
        {"a clip with sound alone",
         Outcome::Found,
         clip(soundBytes),
         {},
         picturesAre(Pictures::NoStream)},
        {"a clip cut off in its head",
         Outcome::Found,
         cutAt(mkv, 0.01),
         {},
         picturesAre(Pictures::Unopened)},
        {"a clip cut off before its index",
         Outcome::Found,
         cutAt(mp4, 0.5),
         {},
         picturesAre(Pictures::Unopened)},
        {"a clip cut off half-way",
         Outcome::Found,
         cutAt(mkv, 0.5),
         {},
         picturesAre(Pictures::Some)},
        {"a clip of single pictures cut off half-way",
         Outcome::Found,
         cutAt(avi, 0.5),
         {},
         picturesAre(Pictures::Some)},
        {"a clip that is noise behind its head",
         Outcome::Found,
         noisyBehind(mkv, 8),
         {},
         picturesAre(Pictures::Any)},
        {"a clip that is noise half-way",
         Outcome::Found,
         noisyBehind(avi, 2),
         {},
         picturesAre(Pictures::Any)},
        {"a clip with flipped bits", Outcome::Found, flipped(avi), {}, picturesAre(Pictures::Any)},
        {"a clip with a damaged index",
         Outcome::Found,
         flipped(mp4),
         {},
         picturesAre(Pictures::Any)},
        {"a clip that changes its size half-way",
         Outcome::Found,
         clip(twoSizes),
         {},
         picturesAre(Pictures::All)},
        {"a clip gone before it is played", Outcome::Found, clip(avi), removeFile(kClipName),
         [](Bench& bench) {
             auto* item = bench.stage.scene()->findChild<VLVideoComponent*>();
             item->setSource(u"clip"_s);
             item->setState(VLVideoComponent::playingState);
             return qIsNaN(item->loadProgress()) ? QString() : u"there are pictures"_s;
         }},
        {"a clip that is a directory", Outcome::Found, clipScene(),
         [](Bench& bench) { QDir().mkpath(bench.path(kClipName)); },
         [](Bench& bench) {
             auto* item = bench.stage.scene()->findChild<VLVideoComponent*>();
             item->setSource(u"clip"_s);
             return qIsNaN(item->loadProgress()) ? QString() : u"there are pictures"_s;
         }},
    };
}

const Faults& allFaults()
{
    static const Faults faults = [] {
        Faults all;
        for (Faults (*part)() : {faultsOfForm, faultsOfCutting, faultsOfEncoding, faultsOfSize,
                                 faultsOfMeaning, faultsOfFiles, faultsOfScenes,
                                 faultsOfTranslations, faultsOfKeyData, faultsOfMedia}) {
            for (Fault& fault : part())
                all.push_back(std::move(fault));
        }
        return all;
    }();
    return faults;
}

void arrange(Bench& bench, const Fault& fault)
{
    fault.write(bench);
    bench.stage.rescan();
    if (fault.spoil)
        fault.spoil(bench);
}

bool endsProcess(Outcome outcome)
{
    return outcome == Outcome::EndsProcess || outcome == Outcome::KeysEndProcess;
}

} // namespace

class TestBadContent : public VidletsTest
{
    Q_OBJECT

public:
    int runChild(const QString& name) override;

private Q_SLOTS:
    void badContent_isData_data();
    void badContent_isData();

private:
    static void checkEndOfProcess(const Fault& fault);
    static void checkOutcome(Bench& bench, const Fault& fault);
    static void checkStaleResult(Bench& bench);
    static void checkShown(Bench& bench, const Fault& fault);
    static void checkGoodTip(Bench& bench);
};

/// A fault that ends the process, by its index in the table.
int TestBadContent::runChild(const QString& name)
{
    const Fault& fault = allFaults().at(name.toUInt());
    Bench bench;
    arrange(bench, fault);
    QTextStream out(stdout);
    out << "begin" << Qt::endl;
    if (fault.outcome == Outcome::KeysEndProcess)
        bench.stage.manager->keys();
    else
        bench.show(badKey());
    out << "end" << Qt::endl;
    return EXIT_SUCCESS;
}

void TestBadContent::badContent_isData_data()
{
    QTest::addColumn<int>("index");
    int index = 0;
    for (const Fault& fault : allFaults())
        QTest::newRow(fault.name) << index++;
}

void TestBadContent::badContent_isData()
{
    QFETCH(int, index);
    const Fault& fault = allFaults().at(static_cast<size_t>(index));
    if (endsProcess(fault.outcome)) {
        // A process that ends in the middle leaves its files behind; this goes with them.
        const QTemporaryDir scratch;
        const QByteArray before = qgetenv("TMPDIR");
        qputenv("TMPDIR", QFile::encodeName(scratch.path()));
        const ChildResult result = runInChildProcess(QString::number(index));
        if (before.isEmpty())
            qunsetenv("TMPDIR");
        else
            qputenv("TMPDIR", before);
        QVERIFY(result.finished);
        QVERIFY(result.crashed);
        QVERIFY2(result.standardOutput.startsWith("begin\n"), result.standardError.constData());
        QVERIFY(!result.standardOutput.contains("\nend\n"));
        QVERIFY2(result.standardError.contains("ASSERT"), result.standardError.constData());
    }

    const Unprivileged rights(fault.unprivileged);
    Bench bench;
    if (!endsProcess(fault.outcome)) {
        arrange(bench, fault);
        checkOutcome(bench, fault);
        if (QTest::currentTestFailed())
            return;
    } else if (fault.outcome == Outcome::KeysEndProcess) {
        arrange(bench, fault);
        QVERIFY(!bench.show(badKey()));
    }
    checkGoodTip(bench);
}

void TestBadContent::checkOutcome(Bench& bench, const Fault& fault)
{
    switch (fault.outcome) {
    case Outcome::Stale:
        checkStaleResult(bench);
        break;
    case Outcome::NotFound:
        QVERIFY(!bench.show(badKey()));
        QVERIFY(!bench.stage.popup()->isVisible());
        break;
    default:
        checkShown(bench, fault);
        break;
    }
}

/// Shows by the addresses alone that what was found has gone: nobody may look into it.
void TestBadContent::checkStaleResult(Bench& bench)
{
    const ObjectCensus census;
    VLXmlElement* root = nullptr;
    const VLXmlElement* element =
        bench.stage.index.load(badKey(), bench.controlFile(), QLocale(u"en_US"_s), root);
    QVERIFY(element);
    QVERIFY(root);
    QVERIFY(!census.isAlive(element));
    QVERIFY(!census.isAlive(root));
    QVERIFY(census.living<VLXmlElement>().isEmpty());
}

void TestBadContent::checkShown(Bench& bench, const Fault& fault)
{
    if (fault.warning)
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QString::fromLatin1(fault.warning)));
    QVERIFY(bench.show(badKey()));
    QVERIFY(bench.stage.popup()->isVisible());
    QCOMPARE(bench.stage.view()->content()->attribute(u"key"_s), badKey());
    if (fault.outcome == Outcome::FoundNoScene)
        QVERIFY(!bench.stage.scene());
    else
        QCOMPARE(bench.stage.scene()->property("shownKey").toString(), badKey());
    if (fault.message) {
        const QRegularExpression message(QString::fromLatin1(fault.message));
        const QStringList messages = bench.stage.interface.messages(VLMessageDebug);
        QVERIFY2(!messages.filter(message).isEmpty(), qPrintable(messages.join(u'\n')));
    }
    if (fault.examine) {
        const QString finding = fault.examine(bench);
        QVERIFY2(finding.isEmpty(), qPrintable(finding));
    }
}

/// The bad file is still recorded, and is searched before the good one.
void TestBadContent::checkGoodTip(Bench& bench)
{
    const QString key = u"open"_s;
    QVERIFY(bench.show(key));
    QVERIFY(bench.stage.popup()->isVisible());
    QVERIFY(bench.stage.scene());
    QCOMPARE(bench.stage.scene()->property("shownKey").toString(), key);
    QCOMPARE(bench.stage.scene()->property("shownLocation").toString(), bench.stage.packageRoot);
    QTRY_COMPARE(bench.stage.view()->size(), QSize(120, 80));
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestBadContent>(argc, argv);
}

#include "tst_badcontent.moc"
