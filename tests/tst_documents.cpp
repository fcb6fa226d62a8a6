// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "DocumentCheck.h"
#include "PackageBuilder.h"
#include "VidletsTest.h"

using namespace Qt::StringLiterals;

namespace {

QString sourceTree()
{
    return QStringLiteral(SOURCE_TREE);
}

/// A small source tree in which all documents are right, until a test writes something else.
class SmallTree
{
public:
    SmallTree()
    {
        write(u"README.md"_s,
              "# Small\n\n[Index](docs/README.md)\n\n```cpp\nint answer = 42;\n```\n");
        write(u"docs/README.md"_s,
              "[Hosts](host-guide.md#what-to-set) [Authors](author-guide.md) "
              "[Behaviour](behaviour.md) [Web](https://example.org/)\n");
        write(u"docs/host-guide.md"_s,
              "# Hosts\n\n## What to set\n\n| To | Key |\n|---|---|\n| switch | `ckSwitch` |\n");
        write(u"docs/author-guide.md"_s, "The keys are `tool.pen` and others.\n");
        write(u"docs/behaviour.md"_s, "It does. `tst_small: it_does`,\n`tst_small:\nit_is`\n");
        write(u"tests/tst_small.cpp"_s, "void TestSmall::it_does()\nvoid TestSmall::it_is()\n");
        write(u"Vidlets/VLContext.h"_s, "enum contextKey {\n    ckSwitch = 1,\n};\n");
        write(u"examples/CMakeLists.txt"_s, "add_subdirectory(small)\n");
        write(u"examples/small/main.cpp"_s, "int main()\n{\n    int answer = 42;\n}\n");
        write(u"examples/workbench/packages/Workbench.vidlets/Control/tools.xml"_s,
              "<vidlets>\n<vidlet title=\"Pen\"\n key=\"tool.pen\"/>\n</vidlets>\n");
    }
    void write(const QString& name, const QByteArray& content)
    {
        m_files.write(name, content);
    }
    QString root() const
    {
        return m_files.dataPath();
    }
    /// What all checks together find.
    QStringList findings() const
    {
        return DocumentCheck::unknownTests(root()) + DocumentCheck::missingSettings(root())
            + DocumentCheck::missingWorkbenchKeys(root()) + DocumentCheck::unlinkedPages(root())
            + DocumentCheck::brokenLinks(root()) + DocumentCheck::unquotedBlocks(root())
            + DocumentCheck::unbuiltExamples(root());
    }

private:
    PackageBuilder m_files;
};

} // namespace

class TestDocuments : public VidletsTest
{
    Q_OBJECT

private Q_SLOTS:
    // The documents of this project.
    void behaviour_namesTestsThatExist();
    void hostGuide_hasRowForEachSetting();
    void authorGuide_listsEachKeyOfWorkbench();
    void pages_areReachedFromReadme();
    void links_leadSomewhere();
    void blocksOfCode_standInExamples();
    void examples_areBuilt();

    // The checks themselves.
    void checks_findNothing_whenAllIsRight();
    void checks_findWhatIsWrong_data();
    void checks_findWhatIsWrong();
};

void TestDocuments::behaviour_namesTestsThatExist()
{
    const QStringList findings = DocumentCheck::unknownTests(sourceTree());
    QVERIFY2(findings.isEmpty(), qPrintable(findings.join(u'\n')));
}

void TestDocuments::hostGuide_hasRowForEachSetting()
{
    const QStringList findings = DocumentCheck::missingSettings(sourceTree());
    QVERIFY2(findings.isEmpty(), qPrintable(findings.join(u'\n')));
}

void TestDocuments::authorGuide_listsEachKeyOfWorkbench()
{
    const QStringList findings = DocumentCheck::missingWorkbenchKeys(sourceTree());
    QVERIFY2(findings.isEmpty(), qPrintable(findings.join(u'\n')));
}

void TestDocuments::pages_areReachedFromReadme()
{
    const QStringList findings = DocumentCheck::unlinkedPages(sourceTree());
    QVERIFY2(findings.isEmpty(), qPrintable(findings.join(u'\n')));
}

void TestDocuments::links_leadSomewhere()
{
    const QStringList findings = DocumentCheck::brokenLinks(sourceTree());
    QVERIFY2(findings.isEmpty(), qPrintable(findings.join(u'\n')));
}

void TestDocuments::blocksOfCode_standInExamples()
{
    const QStringList findings = DocumentCheck::unquotedBlocks(sourceTree());
    QVERIFY2(findings.isEmpty(), qPrintable(findings.join(u'\n')));
}

void TestDocuments::examples_areBuilt()
{
    const QStringList findings = DocumentCheck::unbuiltExamples(sourceTree());
    QVERIFY2(findings.isEmpty(), qPrintable(findings.join(u'\n')));
}

void TestDocuments::checks_findNothing_whenAllIsRight()
{
    const SmallTree tree;
    QCOMPARE(tree.findings().join(u'\n'), QString());
}

void TestDocuments::checks_findWhatIsWrong_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("finding");
    const auto row = [](const char* name, const char* file, const char* content,
                        const char* finding) {
        QTest::newRow(name) << QString::fromLatin1(file) << QByteArray(content)
                            << QString::fromLatin1(finding);
    };
    row("test is gone", "tests/tst_small.cpp", "void TestSmall::it_is()\n",
        "docs/behaviour.md: no test tst_small: it_does");
    row("program is gone", "docs/behaviour.md", "`tst_none: it_does`\n",
        "docs/behaviour.md: no test tst_none: it_does");
    row("setting without row", "Vidlets/VLContext.h",
        "enum contextKey {\n    ckSwitch = 1,\n    ckNew = 2,\n};\n",
        "docs/host-guide.md: no row for ckNew");
    row("row without setting", "docs/host-guide.md",
        "## What to set\n\n| switch | `ckSwitch` |\n| turn | `ckOld` |\n",
        "docs/host-guide.md: no setting ckOld");
    row("key is not listed", "docs/author-guide.md", "The keys are `tool.line` and others.\n",
        "docs/author-guide.md: the key tool.pen is not listed");
    row("page without link", "docs/lost.md", "# Lost\n", "docs/lost.md: no page links to it");
    row("link to no file", "docs/author-guide.md", "`tool.pen` [x](none.md)\n",
        "docs/author-guide.md: there is no docs/none.md");
    row("link to no heading", "docs/author-guide.md", "`tool.pen` [x](host-guide.md#none)\n",
        "docs/author-guide.md: there is no docs/host-guide.md#none");
    row("heading is another", "docs/host-guide.md", "## What to do\n\n| switch | `ckSwitch` |\n",
        "docs/README.md: there is no docs/host-guide.md#what-to-set");
    row("block is in no example", "docs/author-guide.md",
        "`tool.pen`\n\n```cpp\nint answer = 43;\n```\n",
        "docs/author-guide.md:3: the block is in no example");
    row("example has changed", "examples/small/main.cpp", "int main()\n{\n}\n",
        "README.md:5: the block is in no example");
    row("lines are not in a row", "examples/small/main.cpp",
        "int main()\n{\n    int answer =\n    // forty-two\n    42;\n}\n",
        "README.md:5: the block is in no example");
    row("language is unknown", "docs/author-guide.md", "`tool.pen`\n\n```\nanything\n```\n",
        "docs/author-guide.md:3: a block of unknown language");
    row("example is not built", "examples/other/main.cpp", "int main()\n{\n}\n",
        "examples/other/main.cpp: is not built");
}

void TestDocuments::checks_findWhatIsWrong()
{
    QFETCH(const QString, file);
    QFETCH(const QByteArray, content);
    QFETCH(const QString, finding);
    SmallTree tree;
    tree.write(file, content);
    QCOMPARE(tree.findings().join(u'\n'), finding);
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestDocuments>(argc, argv);
}

#include "tst_documents.moc"
