// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

// The key data file, merged into a tip.
//
// The input is the file; one that breaks outside its root is left out, since the parser ends the
// process on it by design. In a guarded run none is, and nothing may be left of the file.

#include "FuzzSupport.h"
#include "ObjectCensus.h"
#include <Vidlets/VLContext.h>
#include <Vidlets/VLIndex.h>
#include <Vidlets/VLXmlElement.h>

#include <QtGlobal>

using namespace Qt::StringLiterals;

using namespace Vidlets;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const FuzzDirectory directory;
    static VLContext context;
    static VLIndex index(&context, {});
    const QByteArray document = inputBytes(data, size);
    context.set(ckGuardContent, isGuardedRun());
    if (!isGuardedRun() && XmlSurvey(document).breaksOutsideRoot)
        return -1;
    context.set(ckKeyDataFile, directory.write(u"keys.xml"_s, document));

    const ObjectCensus census;
    {
        VLXmlElement element;
        element.setAttribute(u"key"_s, u"open"_s);
        // "bad" is the key in the broken files of the tests, which are seeds too.
        for (const QString& key : {u"open"_s, u"bad"_s, QString()})
            index.loadKeyData(key, &element);
        element.toXml();
    }
    if (isGuardedRun() && !census.living<VLXmlElement>().isEmpty())
        qFatal("Elements are left");
    census.deleteLiving<VLXmlElement>();
    return 0;
}
