// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

// Interpolation, held against a plain scanner that does the same.
//
// The lines up to the first empty one are variables, as "name=value"; a line without "=" is a
// variable with no value. The rest is the text. A variable that contains itself never finishes by
// design, directly or by way of others or of the text around it, and a few nested ones grow without
// bound; so an input is left out where the scanner runs out of steps or of room. In a guarded run
// none is: those have to come to an end too, and to a short one.

#include "FuzzSupport.h"
#include "VLTextExpansion.h"
#include <Vidlets/VLContext.h>
#include <Vidlets/VLIndex.h>
#include <Vidlets/VLInterface.h>
#include <Vidlets/VLManager.h>

#include <optional>

using namespace Qt::StringLiterals;

using namespace Vidlets;

namespace {

constexpr int kMaxReplacements = 200;
constexpr qsizetype kMaxLength = 20000;

using Variables = QMap<QString, QVariant>;

Variables readVariables(const QString& lines)
{
    Variables variables;
    const QStringList list = lines.split(u'\n');
    for (const QString& line : list) {
        const qsizetype separator = line.indexOf(u'=');
        if (separator < 0)
            variables.insert(line, QVariant());
        else
            variables.insert(line.left(separator), line.mid(separator + 1));
    }
    return variables;
}

bool isNameCharacter(QChar c)
{
    const char16_t code = c.unicode();
    return (code >= u'a' && code <= u'z') || (code >= u'A' && code <= u'Z')
        || (code >= u'0' && code <= u'9') || code == u'-' || code == u'_';
}

/// The end of the reference that starts at @p start, or -1 where none does.
qsizetype referenceEnd(const QString& text, qsizetype start)
{
    if (!QStringView(text).mid(start).startsWith("%("_L1))
        return -1;
    qsizetype end = start + 2;
    while (end < text.size() && isNameCharacter(text.at(end)))
        ++end;
    if (end == start + 2 || !QStringView(text).mid(end).startsWith(")s"_L1))
        return -1;
    return end + 2;
}

/// What interpolation should give; nothing where it does not come to an end in reasonable bounds.
std::optional<QString> expected(QString text, const Variables& variables)
{
    int replacements = 0;
    for (qsizetype position = 0; position < text.size();) {
        const qsizetype end = referenceEnd(text, position);
        if (end < 0) {
            ++position;
            continue;
        }
        const QString name = text.mid(position + 2, end - position - 4);
        const QString value = variables.value(name).toString();
        if (value.isNull()) {
            position = end;
            continue;
        }
        text = text.left(position) + value + text.mid(end);
        if (++replacements > kMaxReplacements || text.size() > kMaxLength)
            return std::nullopt;
    }
    return text;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static VLContext context;
    static VLIndex index(&context, {});
    static VLInterface interface(context, {}, &index);
    static VLManager manager(&interface, context, {}, &index);

    const QString input = QString::fromUtf8(inputBytes(data, size));
    const QString separator = u"\n\n"_s;
    const qsizetype border = input.indexOf(separator);
    const Variables variables = readVariables(input.left(qMax<qsizetype>(border, 0)));
    const QString text = border < 0 ? input : input.mid(border + separator.size());

    const std::optional<QString> result = expected(text, variables);
    manager.context().set(ckGuardContent, isGuardedRun());
    // Where a variable meets itself the guard may leave what would have come to an end.
    const bool isRecursive =
        isGuardedRun() && !VLTextExpansion(text, variables).recursiveNames().isEmpty();
    if (isGuardedRun() && (!result || isRecursive)) {
        constexpr qsizetype kMaxBytes = qsizetype(1024) * 1024;
        if (manager.interpolate(text, variables).toUtf8().size() > kMaxBytes)
            qFatal("The text is too long");
        return 0;
    }
    if (!result)
        return -1;
    if (manager.interpolate(text, variables) != *result)
        qFatal("Interpolation differs from the plain scanner");
    return 0;
}
