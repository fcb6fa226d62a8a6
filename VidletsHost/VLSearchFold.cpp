// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "VLSearchFold.h"

#include <QChar>

using namespace Qt::StringLiterals;

namespace Vidlets {

namespace {

constexpr qsizetype kMaxWordLength = 64;
// Latin letters, which most texts are of.
constexpr char32_t kFrequentEnd = 0x0250;
constexpr char32_t kTatweel = 0x0640;
constexpr char32_t kHamza = 0x0621;
constexpr char32_t kHighHamza = 0x0674;
constexpr char32_t kVoicedMark = 0x3099;
constexpr char32_t kSemiVoicedMark = 0x309A;

/// A character of a text.
struct Step
{
    char32_t character;
    int length;
};

/// The character at @p index; half a pair stands for itself.
Step stepAt(QStringView text, qsizetype index)
{
    const QChar first = text.at(index);
    if (first.isHighSurrogate() && index + 1 < text.size() && text.at(index + 1).isLowSurrogate())
        return {QChar::surrogateToUcs4(first, text.at(index + 1)), 2};
    return {first.unicode(), 1};
}

bool isMark(char32_t character)
{
    const QChar::Category category = QChar::category(character);
    return category == QChar::Mark_NonSpacing || category == QChar::Mark_SpacingCombining
        || category == QChar::Mark_Enclosing;
}

/// Whether a mark makes another letter and not the same one in another way.
bool isLetterMark(char32_t mark)
{
    switch (QChar::script(mark)) {
    case QChar::Script_Inherited:
        return mark == kVoicedMark || mark == kSemiVoicedMark;
    case QChar::Script_Common:
    case QChar::Script_Unknown:
    case QChar::Script_Latin:
    case QChar::Script_Greek:
    case QChar::Script_Cyrillic:
    case QChar::Script_Hebrew:
    case QChar::Script_Arabic:
    case QChar::Script_Syriac:
        return false;
    default:
        return true;
    }
}

bool isIdeograph(char32_t character)
{
    switch (QChar::script(character)) {
    case QChar::Script_Han:
    case QChar::Script_Hiragana:
    case QChar::Script_Katakana:
    case QChar::Script_Thai:
    case QChar::Script_Lao:
    case QChar::Script_Khmer:
    case QChar::Script_Myanmar:
        return true;
    default:
        return character == kVoicedMark || character == kSemiVoicedMark;
    }
}

/// What stands for a lower-case letter that does not come apart by itself.
QLatin1StringView spelledOut(char32_t letter)
{
    switch (letter) {
    case 0x00DF:
        return "ss"_L1;
    case 0x00E6:
        return "ae"_L1;
    case 0x0153:
        return "oe"_L1;
    case 0x00F8:
        return "o"_L1;
    case 0x00F0:
    case 0x0111:
        return "d"_L1;
    case 0x00FE:
        return "th"_L1;
    case 0x0127:
        return "h"_L1;
    case 0x0131:
        return "i"_L1;
    case 0x0142:
        return "l"_L1;
    case 0x0167:
        return "t"_L1;
    default:
        return {};
    }
}

/// What is written for a letter of Arabic where another keyboard, or none of the dots, was at hand.
char32_t plainArabic(char32_t letter)
{
    switch (letter) {
    case 0x0671:
        return 0x0627;
    case 0x0649:
    case 0x06CC:
        return 0x064A;
    case 0x06A9:
        return 0x0643;
    default:
        return letter;
    }
}

bool isDropped(char32_t character)
{
    return character == kTatweel || character == kHamza || character == kHighHamza
        || QChar::category(character) == QChar::Other_Format
        || (isMark(character) && !isLetterMark(character));
}

QString foldedLetter(char32_t character)
{
    if (isDropped(character))
        return u""_s;
    const int digit = QChar::digitValue(character);
    if (digit >= 0)
        return QString::number(digit);
    const char32_t letter = plainArabic(QChar::toCaseFolded(character));
    const QLatin1StringView spelled = spelledOut(letter);
    return spelled.isEmpty() ? QString::fromUcs4(&letter, 1) : QString(spelled);
}

/// Null for what stands between words, empty for what stands for nothing.
QString foldedCharacter(char32_t character)
{
    if (isDropped(character))
        return u""_s;
    if (QChar::isSurrogate(character))
        return QString();
    if (!QChar::isLetterOrNumber(character) && !isMark(character))
        return QString();
    const QString apart =
        QString::fromUcs4(&character, 1).normalized(QString::NormalizationForm_KD);
    QString result = u""_s;
    for (qsizetype i = 0; i < apart.size();) {
        const Step step = stepAt(apart, i);
        i += step.length;
        if (QChar::isLetterOrNumber(step.character) || isMark(step.character))
            result += foldedLetter(step.character);
    }
    return result;
}

bool isNameCharacter(QChar character)
{
    return character == u'-' || character == u'_'
        || (character.unicode() < 0x80 && character.isLetterOrNumber());
}

/// The length of the reference to a variable that begins at @p start; 0 without one.
qsizetype referenceLength(QStringView text, qsizetype start)
{
    if (!text.sliced(start).startsWith("%("_L1))
        return 0;
    qsizetype end = start + 2;
    while (end < text.size() && isNameCharacter(text.at(end)))
        ++end;
    const bool isReference = end > start + 2 && text.sliced(end).startsWith(")s"_L1);
    return isReference ? end + 2 - start : 0;
}

} // namespace

VLSearchFold::VLSearchFold()
{
    for (char32_t character = 0; character < kFrequentEnd; ++character)
        m_frequent.append(foldedCharacter(character));
}

QList<VLSearchFold::Word> VLSearchFold::words(const QString& text)
{
    QList<Word> words;
    const QStringView view(text);
    qsizetype start = -1;
    bool areIdeographs = false;
    const auto end = [&](qsizetype index) {
        if (start >= 0 && areIdeographs)
            cutIdeographs(view, start, index - start, words);
        else if (start >= 0)
            cut(view, start, index - start, words);
        start = -1;
    };
    for (qsizetype i = 0; i < view.size();) {
        const qsizetype reference = view.at(i) == u'%' ? referenceLength(view, i) : 0;
        const Step step = stepAt(view, i);
        const QString& fold = folded(step.character);
        if (reference > 0 || fold.isNull()) {
            end(i);
        } else if (!fold.isEmpty()) {
            const bool isOne = step.character >= 0x80 && isIdeograph(step.character);
            if (isOne != areIdeographs)
                end(i);
            areIdeographs = isOne;
            if (start < 0)
                start = i;
        }
        i += qMax(reference, qsizetype(step.length));
    }
    end(view.size());
    return words;
}

void VLSearchFold::cut(QStringView text, qsizetype start, qsizetype length, QList<Word>& words)
{
    Word word;
    word.start = start;
    word.length = length;
    for (qsizetype i = start; i < start + length && word.text.size() < kMaxWordLength;) {
        const Step step = stepAt(text, i);
        word.text += folded(step.character);
        i += step.length;
    }
    // Half a pair is no character.
    const qsizetype kept = qMin(kMaxWordLength, word.text.size());
    const bool cutsPair = kept > 0 && word.text.at(kept - 1).isHighSurrogate();
    word.text.truncate(cutsPair ? kept - 1 : kept);
    words.append(word);
}

void VLSearchFold::cutIdeographs(QStringView text, qsizetype start, qsizetype length,
                                 QList<Word>& words)
{
    Word last;
    for (qsizetype i = start; i < start + length;) {
        const Step step = stepAt(text, i);
        const QString& fold = folded(step.character);
        const qsizetype end = i + step.length;
        if (!fold.isEmpty()) {
            const bool isLonger = !last.text.isEmpty();
            if (isLonger)
                words.append({last.text + fold, last.start, end - last.start, 2, false});
            last = {fold, i, step.length, 1, isLonger};
        }
        i = end;
    }
    words.append(last);
}

const QString& VLSearchFold::folded(char32_t character)
{
    if (character < kFrequentEnd)
        return m_frequent.at(qsizetype(character));
    const auto found = m_folded.constFind(character);
    return found != m_folded.cend() ? *found
                                    : *m_folded.insert(character, foldedCharacter(character));
}

} // namespace Vidlets
