// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLSEARCHFOLD_H
#define VLSEARCHFOLD_H

#include <QHash>
#include <QList>
#include <QString>
#include <QStringView>

namespace Vidlets {

/**
 * Cuts texts into words, and makes those equal that a reader takes for the same.
 *
 * Case, accents, the dots of umlauts, strokes through letters, vowel signs, tatweel and hamza go;
 * "ß" is "ss", ligatures are their letters, digits of all scripts are those of ASCII. Marks stay
 * in the scripts of which they are letters, those of India and Thailand among them. A folded word
 * has nothing but letters, digits and such marks, and is 64 characters long at most: what is
 * longer is cut off.
 *
 * Scripts that write no blanks have no words: each two neighbours are one, and the last of a run.
 *
 * References to variables, "%(name)s", are no words. Internal to the host kit. One is used on one
 * thread.
 */
class VLSearchFold
{
public:
    struct Word
    {
        /// As it is compared.
        QString text;
        /// Where it stands in the text that was cut.
        qsizetype start = 0;
        qsizetype length = 0;
        /// How many letters of a script without blanks it consists of; 0 in all others.
        int ideographs = 0;
        /// Whether it is the end of the word before.
        bool isTail = false;
    };

    VLSearchFold();

    /// Returns the words of @p text in their order.
    QList<Word> words(const QString& text);

private:
    Q_DISABLE_COPY_MOVE(VLSearchFold)

    void cut(QStringView text, qsizetype start, qsizetype length, QList<Word>& words);
    void cutIdeographs(QStringView text, qsizetype start, qsizetype length, QList<Word>& words);
    const QString& folded(char32_t character);

    /// What characters become: null for one between words. The frequent ones by their number.
    QList<QString> m_frequent;
    QHash<char32_t, QString> m_folded;
};

} // namespace Vidlets

#endif
