// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "AuthorXmlFault.h"

#include <algorithm>
#include <cstring>
#include <memory>

#include <libxml/parser.h>
#include <libxml/xmlerror.h>

using namespace Qt::StringLiterals;

namespace Vidlets {

namespace {

#if LIBXML_VERSION >= 21200
using XmlError = const xmlError;
#else
using XmlError = xmlError;
#endif

struct ContextDeleter
{
    void operator()(xmlParserCtxt* context) const
    {
        xmlFreeDoc(context->myDoc);
        context->myDoc = nullptr;
        xmlFreeParserCtxt(context);
    }
};

/// What is left to read.
struct Source
{
    const QByteArray& bytes;
    qsizetype at = 0;
};

struct Faults
{
    /// One that does not end the reading by itself, as long as there is no other.
    QList<AuthorXmlFault> passed;
    QList<AuthorXmlFault> fatal;
    bool isConversionFailed = false;
    const xmlParserCtxt* context = nullptr;
};

int readBytes(void* opaque, char* buffer, int size)
{
    auto* source = static_cast<Source*>(opaque);
    const qsizetype count = std::min<qsizetype>(size, source->bytes.size() - source->at);
    std::memcpy(buffer, source->bytes.constData() + source->at, static_cast<std::size_t>(count));
    source->at += count;
    return static_cast<int>(count);
}

/// The one thing that the reader says beside its errors is that bytes do not fit the encoding.
// NOLINTNEXTLINE(cert-dcl50-cpp): the reader wants one with any number of arguments.
void noteConversion(void* context, const char* /*message*/, ...)
{
    static_cast<Faults*>(context)->isConversionFailed = true;
}

int closeNothing(void* /*source*/)
{
    return 0;
}

AuthorXmlFault::Kind kindOf(int code)
{
    switch (code) {
    case XML_ERR_DOCUMENT_END:
        return AuthorXmlFault::Kind::AfterRoot;
    case XML_ERR_UNKNOWN_ENCODING:
    case XML_ERR_UNSUPPORTED_ENCODING:
    case XML_ERR_INVALID_ENCODING:
    case XML_I18N_CONV_FAILED:
        return AuthorXmlFault::Kind::Encoding;
    default:
        return AuthorXmlFault::Kind::Broken;
    }
}

/// What follows a fault is mostly a consequence of it, and only the first is kept.
void takeError(void* context, XmlError* error)
{
    auto* faults = static_cast<Faults*>(static_cast<xmlParserCtxt*>(context)->_private);
    QList<AuthorXmlFault>& list = error->level == XML_ERR_FATAL ? faults->fatal : faults->passed;
    if (error->level < XML_ERR_ERROR || !faults->fatal.isEmpty() || !list.isEmpty())
        return;
    // Within an entity the error has a place of its own, and the context may be another one.
    const bool isReading = faults->context->inputNr > 0;
    const int line = isReading ? faults->context->inputTab[0]->line : error->line;
    const int column = isReading ? faults->context->inputTab[0]->col : error->int2;
    list.append({{qMax(line, 1), qMax(column, 1)},
                 kindOf(error->code),
                 QString::fromUtf8(error->message).section(u'\n', 0, 0).trimmed()});
}

/// A context that keeps nothing of what it reads but the entities, which it needs for reading on.
std::unique_ptr<xmlParserCtxt, ContextDeleter> makeContext(Faults& faults)
{
    std::unique_ptr<xmlParserCtxt, ContextDeleter> context(xmlNewParserCtxt());
    if (!context)
        return context;
    xmlSAXHandler* sax = context->sax;
    sax->startElementNs = nullptr;
    sax->endElementNs = nullptr;
    sax->startElement = nullptr;
    sax->endElement = nullptr;
    sax->reference = nullptr;
    sax->characters = nullptr;
    sax->ignorableWhitespace = nullptr;
    sax->cdataBlock = nullptr;
    sax->comment = nullptr;
    sax->processingInstruction = nullptr;
    sax->error = nullptr;
    sax->warning = nullptr;
    sax->fatalError = nullptr;
    sax->serror = takeError;
    context->_private = &faults;
    faults.context = context.get();
    return context;
}

} // namespace

QList<AuthorXmlFault> AuthorXmlFaults::in(const QByteArray& bytes)
{
    static const bool isInitialised = [] {
        xmlInitParser();
        return true;
    }();
    Q_UNUSED(isInitialised)
    Faults faults;
    const auto context = makeContext(faults);
    if (!context)
        return {};
    Source source{bytes};
    // For this thread alone.
    xmlSetGenericErrorFunc(&faults, noteConversion);
    // Neither the network nor a file named in the document is gone to: nothing asks for either.
    context->myDoc = xmlCtxtReadIO(context.get(), readBytes, closeNothing, &source, nullptr,
                                   nullptr, XML_PARSE_NONET | XML_PARSE_BIG_LINES);
    xmlSetGenericErrorFunc(nullptr, nullptr);
    // It reads no further than to there, and then tells of what it misses.
    if (faults.isConversionFailed && !faults.fatal.isEmpty()) {
        faults.fatal.first().kind = AuthorXmlFault::Kind::Encoding;
        faults.fatal.first().message = u"A byte does not fit the declared encoding"_s;
    }
    return faults.fatal.isEmpty() ? QList<AuthorXmlFault>() : faults.passed + faults.fatal;
}

} // namespace Vidlets
