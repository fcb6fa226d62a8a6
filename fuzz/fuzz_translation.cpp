// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

// A compiled translation file, checked and then loaded from memory as a guarded host does it.
//
// The input is the file. Qt goes by the offsets in it without a look at the bounds of the file, so
// nothing of it reaches Qt unchecked. Texts and contexts are those of the seeds, of which a garbled
// file still has most.

#include "FuzzSupport.h"
#include "VLTranslationData.h"

#include <QTranslator>

#include <array>
#include <cstring>
#include <memory>

using namespace Vidlets;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QByteArray checked = TranslationData::checked(inputBytes(data, size));
    if (checked.isNull())
        return 0;
    if (TranslationData::hasDependencies(checked))
        qFatal("The dependencies are still there");

    // A block of its own: what is read far beyond it ends the process.
    const auto block = std::make_unique<uchar[]>(static_cast<size_t>(checked.size()));
    std::memcpy(block.get(), checked.constData(), static_cast<size_t>(checked.size()));
    QTranslator translator;
    if (!translator.load(block.get(), static_cast<int>(checked.size())))
        qFatal("What was checked does not load");
    constexpr std::array<const char*, 5> kContexts{"", "Tip", "Context1", "Context17", "None"};
    constexpr std::array<const char*, 4> kTexts{"", "Open", "Save", "Close"};
    for (const char* context : kContexts) {
        for (const char* text : kTexts)
            translator.translate(context, text, nullptr, -1);
    }
    return 0;
}
