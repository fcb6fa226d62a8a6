// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

// The key data file, merged into a tip.
//
// The input is the file; one that breaks outside its root is left out, since the parser ends the
// process on it by design.

#include "FuzzSupport.h"
#include "ObjectCensus.h"
#include <Vidlets/VLContext.h>
#include <Vidlets/VLIndex.h>
#include <Vidlets/VLXmlElement.h>

using namespace Vidlets;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const FuzzDirectory directory;
    static VLContext context;
    static VLIndex index(&context, {});
    const QByteArray document = inputBytes(data, size);
    if (XmlSurvey(document).breaksOutsideRoot)
        return -1;
    context.set(ckKeyDataFile, directory.write(QStringLiteral("keys.xml"), document));

    const ObjectCensus census;
    {
        VLXmlElement element;
        element.setAttribute(QStringLiteral("key"), QStringLiteral("open"));
        index.loadKeyData(QStringLiteral("open"), &element);
        index.loadKeyData(QString(), &element);
        element.toXml();
    }
    census.deleteLiving<VLXmlElement>();
    return 0;
}
