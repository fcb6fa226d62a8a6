// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef BADCONTENTTEST_H
#define BADCONTENTTEST_H

#include "BadPackage.h"
#include "VidletsTest.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <functional>

/// Looks at the popup of a bad package. Gives what is not as it should be; empty if all is well.
using Examination = std::function<QString(BadPackage&)>;

/**
 * One piece of bad content and what becomes of it, written as a sentence:
 *
 *     bad("emptied since the scan").has(goodControlFile()).afterTheScan(controlFile(""))
 *         .endsTheLookup()
 */
class BadCase
{
public:
    enum class Outcome {
        Shown,          ///< The tip is shown.
        ShownEmpty,     ///< The tip is taken, and there is no scene to show it with.
        NotFound,       ///< The file counts as not having the key.
        Stale,          ///< The lookup gives the addresses of objects that have gone.
        EndsProcess,    ///< The next lookup ends the process, whatever the key.
        KeysEndProcess, ///< The lookup finds nothing, and listing the keys ends the process.
    };

    explicit BadCase(const QString& caseName);

    // What happens.
    BadCase& has(const Step& step);          ///< Before the scan.
    BadCase& afterTheScan(const Step& step); ///< Between scan and lookup.
    /// Without the rights of root, for whom no file is out of reach.
    BadCase& forAnOrdinaryUser();

    // What becomes of it.
    BadCase& isShown();
    BadCase& isShownEmpty();
    BadCase& isNotFound();
    BadCase& isStale();
    BadCase& endsTheLookup();
    BadCase& endsTheListOfKeys();

    // What else is seen of a tip that is shown.
    BadCase& where(const Examination& examination);
    BadCase& tellsTheHost(const char* pattern);
    BadCase& warns(const char* pattern);
    /// What is seen where content is guarded, if that differs.
    BadCase& whereGuarded(const Examination& examination);

    // What becomes of it where content is guarded.
    /// The file is passed over, and the host is warned of its line @p line.
    BadCase& isRefusedAt(int line);
    BadCase& isGuardedShown();
    /// As without a guard, but the host is warned; @p pattern is one of the whole warning.
    BadCase& isWarnedOf(const char* pattern);

    bool endsProcess() const;
    /// Puts the content on the disk, has it scanned, and does what comes after that.
    void arrange(BadPackage& package) const;

    QString name;
    Outcome outcome = Outcome::NotFound;
    QList<Step> before;
    QList<Step> after;
    Examination examination;
    QString message; ///< What the host is told, as a pattern; empty for nothing.
    QString warning; ///< What Qt warns of, as a pattern; empty for nothing.
    bool isUnprivileged = false;
    bool isShownIfGuarded = false;
    bool isRefused = false;         ///< Where content is guarded.
    QString guardedWarning;         ///< What the host is warned of then; empty for nothing.
    Examination guardedExamination; ///< In place of the other one then, where it is set.
};

using BadCases = QList<BadCase>;

inline BadCase bad(const char* name)
{
    return BadCase(QString::fromLatin1(name));
}

/**
 * The base of tests of bad content.
 *
 * Each case is shown to do no harm: its tip comes or does not, as the case says, and a good tip of
 * another package can be shown after that, although the bad file is still recorded and is searched
 * first.
 */
class BadContentTest : public VidletsTest
{
public:
    /// A case that ends the process, by its name.
    int runChild(const QString& name) override;

protected:
    /// The cases of all groups; no two have the same name.
    virtual BadCases allCases() const = 0;

    static void addRows(const BadCases& cases);
    /// Runs the case of @p cases that the current row is.
    static void runRow(const BadCases& cases);
    /// The same with guarded content, where no row ends the process: the case, the warning, and the
    /// good tips of the same and of the other package.
    static void runGuardedRow(const BadCases& cases);

    /// The names of files in a folder of tests/data/broken that no case is named after.
    static QStringList filesWithoutCase(const QString& folder, const BadCases& cases);
};

#endif
