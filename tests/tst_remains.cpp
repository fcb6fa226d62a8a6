// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

/// What a host gains for memory by the safeguard that lets go of what a show leaves behind.

#include "ObjectCensus.h"
#include "PackageBuilder.h"
#include "RecordingInterface.h"
#include "VidletsTest.h"
#include <Vidlets/VLContext.h>
#include <Vidlets/VLIndex.h>
#include <Vidlets/VLManager.h>
#include <Vidlets/VLView.h>
#include <Vidlets/VLWidget.h>
#include <Vidlets/VLXmlElement.h>

#include <QPointer>

#include <memory>

using namespace Qt::StringLiterals;

using namespace Vidlets;

namespace {

/// A manager on a package with two tips, with the safeguard on.
class Stage
{
public:
    explicit Stage(VLIndex* index = nullptr)
    {
        m_packages.writeControlFile(u"tips.vidlets"_s, u"tips.xml"_s,
                                    "<vidlets><vidlet key=\"k\" title=\"A title\"/>"
                                    "<vidlet key=\"l\"/></vidlets>");
        m_packages.writeScene(u"tips.vidlets"_s);
        m_context.set(ckReleaseClips, true);
        manager = std::make_unique<VLManager>(&m_host, m_context,
                                              QStringList{m_packages.dataPath()}, index);
    }
    void set(contextKey key, const QVariant& value) const
    {
        manager->context().set(key, value);
    }
    QString write(const QString& name, const QByteArray& content)
    {
        return m_packages.write(name, content);
    }

private:
    PackageBuilder m_packages;
    VLContext m_context{nullptr};
    RecordingInterface m_host{m_context};

public:
    std::unique_ptr<VLManager> manager;
};

} // namespace

class TestRemains : public VidletsTest
{
    Q_OBJECT

private Q_SLOTS:
    void keys_leaveNothing();
    void vidletAttribute_leavesNothing();
    void keyData_leavesNothing_whenKeyHasNoRecord();
    void popup_takesWholeTreeWithIt();
    void popup_takesWholeTreeWithIt_whenManagerHasGone();
    void showWithContent_takesWholeTreeOfLastTip();
    void manager_takesItsOwnIndexWithIt();
    void manager_leavesGivenIndexAlone();
    void view_leavesTreeOfHostAlone();
};

void TestRemains::keys_leaveNothing()
{
    const Stage stage;
    const ObjectCensus census;
    QCOMPARE(stage.manager->keys(), (QStringList{u"k"_s, u"l"_s}));
    QCOMPARE(census.living<VLXmlElement>().size(), 0);
}

void TestRemains::vidletAttribute_leavesNothing()
{
    const Stage stage;
    const ObjectCensus census;
    QCOMPARE(stage.manager->vidletAttribute(u"k"_s, u"title"_s, QString()), u"A title"_s);
    QCOMPARE(census.living<VLXmlElement>().size(), 0);
}

void TestRemains::keyData_leavesNothing_whenKeyHasNoRecord()
{
    Stage stage;
    stage.set(ckKeyDataFile, stage.write(u"keys.xml"_s, "<vidletkeys own=\"1\"/>"));
    const ObjectCensus census;
    QCOMPARE(stage.manager->vidletAttribute(u"k"_s, u"title"_s, QString()), u"A title"_s);
    QCOMPARE(census.living<VLXmlElement>().size(), 0);
}

void TestRemains::popup_takesWholeTreeWithIt()
{
    const Stage stage;
    const ObjectCensus census;
    QVERIFY(stage.manager->show(u"k"_s, QPoint(10, 10), nullptr));
    QVERIFY(census.living<VLXmlElement>().size() > 1);
    delete stage.manager->widget();
    QCOMPARE(census.living<VLXmlElement>().size(), 0);
}

void TestRemains::popup_takesWholeTreeWithIt_whenManagerHasGone()
{
    Stage stage;
    const ObjectCensus census;
    QVERIFY(stage.manager->show(u"k"_s, QPoint(10, 10), nullptr));
    stage.manager.reset();
    runDeferredDeletions();
    QCOMPARE(census.living<VLXmlElement>().size(), 0);
}

void TestRemains::showWithContent_takesWholeTreeOfLastTip()
{
    const Stage stage;
    const ObjectCensus census;
    QVERIFY(stage.manager->show(u"k"_s, QPoint(10, 10), nullptr));
    auto* next = new VLXmlElement;
    stage.manager->widget()->showWithContent(nullptr, QPoint(10, 10), next, QString());
    QCOMPARE(census.living<VLXmlElement>(), QList<VLXmlElement*>{next});
}

void TestRemains::manager_takesItsOwnIndexWithIt()
{
    Stage stage;
    const QPointer<VLIndex> index = stage.manager->index();
    QVERIFY(index);
    stage.manager.reset();
    QVERIFY(!index);
}

void TestRemains::manager_leavesGivenIndexAlone()
{
    VLIndex index(nullptr, {});
    Stage stage(&index);
    stage.manager.reset();
    QCOMPARE(index.keys(), (QStringList{u"k"_s, u"l"_s}));
}

void TestRemains::view_leavesTreeOfHostAlone()
{
    const Stage stage;
    VLXmlElement tree;
    auto* content = new VLXmlElement(&tree);
    auto view = std::make_unique<VLView>(stage.manager.get(), nullptr);
    view->setContent(content);
    view.reset();
    QVERIFY(tree.children().isEmpty());
}

int main(int argc, char** argv)
{
    return runVidletsTest<TestRemains>(argc, argv);
}

#include "tst_remains.moc"
