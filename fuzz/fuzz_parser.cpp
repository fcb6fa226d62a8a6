// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

// The parser with the library's three filters, with none, and with one that answers as the input
// says.
//
// The first byte chooses the filter. For the last one the second byte gives the number of answers,
// which follow; the rest is the document. A document whose fault lies outside its root is left out:
// the parser ends the process on it by design.

#include "FuzzSupport.h"
#include "ObjectCensus.h"

// For the filters that are private to the index.
#include "VLIndex.cpp"

#include <QPointer>

using namespace Qt::StringLiterals;

using namespace Vidlets;

namespace {

enum FilterKind {
    NoFilter,
    KeysFilter,
    TipFilter,
    KeyDataFilter,
    ScriptedFilter,
    FilterKindCount
};

/// Answers given in turn, over and over.
struct Script
{
    QByteArray answers;
    qsizetype next = 0;
};

int answerInTurn(const QString& /*tag*/, const QXmlStreamAttributes& /*attributes*/, void* userData)
{
    auto& script = *static_cast<Script*>(userData);
    if (script.answers.isEmpty())
        return FilterChildren;
    const int answer = script.answers.at(script.next) & 0xF;
    script.next = (script.next + 1) % script.answers.size();
    return answer;
}

void parse(VLXmlParser& parser, const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("Could not read %s", qPrintable(path));
    const QList<QObject*> elements = parser.parse(file);
    // While the parser lives the result does too, broken or not.
    for (QObject* element : elements)
        qobject_cast<VLXmlElement*>(element)->toXml();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const FuzzDirectory directory;
    const QByteArray input = inputBytes(data, size);
    if (input.size() < 2)
        return -1;
    const int kind = static_cast<uint8_t>(input.at(0)) % FilterKindCount;
    const qsizetype answerCount = kind == ScriptedFilter ? input.at(1) & 0xF : 0;
    Script script{input.mid(2, answerCount)};
    const QByteArray document = input.mid((kind == ScriptedFilter ? 2 : 1) + answerCount);
    if (XmlSurvey(document).breaksOutsideRoot)
        return -1;

    QString key = u"open"_s;
    const QString path = directory.write(u"document.xml"_s, document);
    const ObjectCensus census;
    {
        constexpr ShouldGenerateElementFunction kFilters[] = {
            nullptr, VLIndex::indexDataShouldGenerateElement, matchKeyElement, matchKeyDataElement,
            answerInTurn};
        void* const userData = kind == ScriptedFilter ? static_cast<void*>(&script) : &key;
        VLXmlParser parser(kFilters[kind], userData);
        parse(parser, path);
        // One parser may read several files, also after a broken one.
        parse(parser, path);
    }
    census.deleteLiving<VLXmlElement>();
    return 0;
}
