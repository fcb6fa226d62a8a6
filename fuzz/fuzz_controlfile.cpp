// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

// A control file from the scan to the lookup, by each way that reads one.
//
// The input is the file. One that breaks outside its root is scanned and not looked up, and the
// keys are listed only where its root is one of a control file: the index ends the process on both
// by design. A result from a file that broke with a tag open below its root may be of objects that
// have gone, so it is looked into only where the object lives. In a guarded run every file goes
// every way, and whatever is not handed out has to be gone.

#include "FuzzSupport.h"
#include "ObjectCensus.h"

// For the record that the index leaves behind.
#include "VLIndex.cpp"

using namespace Qt::StringLiterals;

using namespace Vidlets;

namespace {

void lookUpGuarded(VLIndex& index, const ObjectCensus& census, const QString& file)
{
    const QLocale locale(u"en_US"_s);
    for (const QString& key : {u"open"_s, u"save"_s, u"bad"_s, QString()}) {
        VLXmlElement* root = nullptr;
        VLXmlElement* element = index.load(key, file, locale, root);
        if ((element && element->parent() != root) || (!element && root))
            qFatal("The result is not part of its tree");
        if (element)
            element->toXml();
        delete root;
    }
    index.keys();
    if (!census.living<VLXmlElement>().isEmpty())
        qFatal("Elements are left");
}

void lookUp(VLIndex& index, const ObjectCensus& census, const QString& key, const QLocale& locale)
{
    QString path;
    int depth = 0;
    VLXmlElement* root = nullptr;
    VLXmlElement* element = index.retrieve(key, locale, path, depth, root);
    if (!element || !census.isAlive(element))
        return;
    if (element->parent() != root || depth != 2)
        qFatal("The result is not what was recorded");
    element->toXml();
    index.componentPathsForElement(element, u"ui/VidletUI.qml"_s);
    delete root;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const FuzzDirectory directory;
    static VLContext context;
    context.set(ckGuardContent, isGuardedRun());
    const QByteArray document = inputBytes(data, size);
    const QString root = directory.path(u"tips.vidlets"_s);
    const QString file = directory.write(u"tips.vidlets/Control/tips.xml"_s, document);

    const ObjectCensus census;
    VLIndex index(&context, {});
    index.indexControlFile(file, root);
    if (isGuardedRun()) {
        index.store(nullptr, QLocale(), file, 2);
        lookUpGuarded(index, census, file);
        delete index.d;
        return 0;
    }
    const XmlSurvey survey(document);
    if (!survey.breaksOutsideRoot) {
        // Also where the scan refused the file: a host may record what it likes, and a file may
        // change after the scan.
        index.store(nullptr, QLocale(), file, 2);
        index.mapControlFile(file, root);
        const QLocale locale(u"en_US"_s);
        // "bad" is the key in the broken files of the tests, which are seeds too.
        for (const QString& key : {u"open"_s, u"save"_s, u"bad"_s, QString()})
            lookUp(index, census, key, locale);
        lookUp(index, census, u"open"_s, QLocale(u"de_DE"_s));
        if (survey.rootTag == kControlFileTag || survey.rootTag == kTipTag)
            index.keys();
    }
    census.deleteLiving<VLXmlElement>();
    delete index.d;
    return 0;
}
