// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "AuthorRules.h"

#include <QFile>

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

/// A resource of a static library is left out of the program unless it is named.
static void loadPages()
{
    Q_INIT_RESOURCE(vidlets_rules);
}

namespace Vidlets::AuthorRules {

namespace {

constexpr auto Error = AuthorSeverity::Error;
constexpr auto Warning = AuthorSeverity::Warning;
constexpr auto Note = AuthorSeverity::Note;

/// In the order of their names.
constexpr std::array kRules{
    AuthorRule{"attribute-reserved"_L1, Warning, "an attribute that the library writes itself"_L1,
               "Give the attribute another name."_L1},
    AuthorRule{"clip-audio"_L1, Warning, "a clip with sound"_L1,
               R"(Take the sound out, as "vidlets clip" does: it is never played.)"_L1},
    AuthorRule{"clip-bframes"_L1, Warning, "a clip whose last pictures are lost"_L1,
               R"(Encode it without reordered pictures, as "vidlets clip" does.)"_L1},
    AuthorRule{"clip-codec"_L1, Warning, "a clip that is neither H.264 nor VP8 nor VP9"_L1,
               R"(Encode it anew, as "vidlets clip" does.)"_L1},
    AuthorRule{"clip-memory"_L1, Warning, "a clip that takes too much memory"_L1,
               "Make it shorter or smaller: a host with safeguards cuts it off."_L1},
    AuthorRule{"clip-odd-size"_L1, Warning, "a clip whose width or height is odd"_L1,
               R"(Make both even, as "vidlets clip" does.)"_L1},
    AuthorRule{"clip-rate"_L1, Warning,
               "a clip whose rate changes or is above 60 pictures a second"_L1,
               R"(Encode it at a constant rate such as 25, as "vidlets clip --fps 25" does.)"_L1},
    AuthorRule{"clip-unreadable"_L1, Error, "a clip that does not play"_L1,
               R"(Encode it anew from the recording, as "vidlets clip" does.)"_L1},
    AuthorRule{"file-ignored"_L1, Warning, "a file or directory that the library passes over"_L1,
               "Move or mend it so that it is found, or take it out of the package."_L1},
    AuthorRule{"key-blank"_L1, Warning, "a key that is empty or has white space around it"_L1,
               "Write the key exactly as the application asks for it."_L1},
    AuthorRule{"key-missing"_L1, Error, "a tip or record without a key"_L1,
               "Give it the key that the application asks for."_L1},
    AuthorRule{"key-twice"_L1, Error, "a key that stands twice in one file"_L1,
               "Keep one of them: twice counts as not at all."_L1},
    AuthorRule{"key-twice-across"_L1, Warning, "a key that several files have for one locale"_L1,
               "Keep the tip in one of the files."_L1},
    AuthorRule{"keydata-unknown-key"_L1, Warning, "key data for a key that no tip has"_L1,
               "Mend the name, or take the record out."_L1},
    AuthorRule{"l10n-broken"_L1, Error, "a file of translations that cannot be used"_L1,
               R"(Mend the file, or write it anew with "vidlets strings".)"_L1},
    AuthorRule{"l10n-missing"_L1, Warning, "a translation that is not compiled or not there"_L1,
               R"(Compile it with "vidlets strings --release".)"_L1},
    AuthorRule{"l10n-stale"_L1, Warning, "translations that no longer fit their source"_L1,
               R"(Compile them with "vidlets strings --release".)"_L1},
    AuthorRule{"l10n-unfinished"_L1, Warning, "a text without a finished translation"_L1,
               "Translate it, and mark it as finished."_L1},
    AuthorRule{"locale-gap"_L1, Warning, "a tip that is missing in a locale of its package"_L1,
               "Add the tip for that locale, or one to a file for all languages."_L1},
    AuthorRule{"locale-unknown"_L1, Error, "a locale that means nothing, or another one"_L1,
               R"(Write language and territory, as in "de_DE".)"_L1},
    AuthorRule{
        "package-empty"_L1, Warning, "a package without a control file"_L1,
        "Add a control file, if only <vidlets/>: without one the package does not exist."_L1},
    AuthorRule{"package-name"_L1, Warning,
               "a directory whose name keeps it from being a package"_L1,
               R"(Name it like "First.vidlets", without blanks, commas and semicolons.)"_L1},
    AuthorRule{"package-shadowed"_L1, Warning, "one package name in two data paths"_L1,
               "Rename one of them, unless it is meant to go before the other."_L1},
    AuthorRule{"resource-case"_L1, Error, "a resource whose name differs in case"_L1,
               "Write the name as the file has it."_L1},
    AuthorRule{"resource-huge"_L1, Warning, "a resource above 20 MB or 4096 pixels a side"_L1,
               "Make it as large as it is shown."_L1},
    AuthorRule{"resource-missing"_L1, Error, "a picture or clip that is not there"_L1,
               "Add the file to the resources, or mend its name."_L1},
    AuthorRule{"resource-unused"_L1, Note, "a picture or clip that nothing names"_L1,
               "Take it out if no scene puts its name together."_L1},
    AuthorRule{"root-foreign"_L1, Warning, "a file with another root"_L1,
               "Make it the right root, or move the file elsewhere."_L1},
    AuthorRule{"scene-absolute-path"_L1, Warning, "a path that only some computers have"_L1,
               "Take the file into the package, and ask findResource() for it."_L1},
    AuthorRule{"scene-broken"_L1, Error, "a scene that is no QML"_L1, "Mend the place."_L1},
    AuthorRule{"scene-hint"_L1, Note, "what qmllint remarks beside its warnings"_L1,
               R"(Follow it, or write "// qmllint disable" with its category behind the line.)"_L1},
    AuthorRule{
        "scene-lint"_L1, Warning, "what qmllint warns of"_L1,
        R"(Mend the place, or write "// qmllint disable" with its category behind the line.)"_L1},
    AuthorRule{"scene-missing"_L1, Error,
               "a scene that tips or scenes need and that is not there"_L1,
               "Add the scene, or name another one."_L1},
    AuthorRule{"scene-network"_L1, Warning, "a scene that loads from the network"_L1,
               "Take the file into the package; links go through openExternalResource()."_L1},
    AuthorRule{"scene-unchecked"_L1, Warning, "a scene that qmllint has not looked at"_L1,
               "Have qmllint look at it by itself, or write it more simply."_L1},
    AuthorRule{"scene-unguarded"_L1, Warning, R"("vidlet" without a test for null)"_L1,
               R"(Write "vidlet ? vidlet.attribute(...) : """, in each binding and function.)"_L1},
    AuthorRule{"search-unknown"_L1, Warning, R"("search" names a package that is not there)"_L1,
               "Mend the name, or check that package too."_L1},
    AuthorRule{"settings-broken"_L1, Error, "settings of the check that cannot be followed"_L1,
               R"(Mend the line; "vidlets check --explain RULE" tells of a rule.)"_L1},
    AuthorRule{"string-untranslated"_L1, Warning, "a visible text that is not translated"_L1,
               "Write vidletView.translate(text, context) || text."_L1},
    AuthorRule{"text-overlong"_L1, Warning, "a text that no tip has room for"_L1,
               "Say it in fewer words."_L1},
    AuthorRule{"tip-nested"_L1, Warning, "a tip within another element"_L1,
               "Make it a child of the root: elsewhere it is not found."_L1},
    AuthorRule{"ui-missing"_L1, Error, R"(a scene named by "ui" or "simple" that is not there)"_L1,
               "Add the scene, or mend its name."_L1},
    AuthorRule{"variable-syntax"_L1, Warning, "a variable that is not written %(name)s"_L1,
               R"(Write %(name)s, with letters, digits, "-" and "_" in the name.)"_L1},
    AuthorRule{"xml-after-root"_L1, Error, "content behind the end of the root"_L1,
               "Keep everything within one root."_L1},
    AuthorRule{"xml-broken"_L1, Error, "a file that is not well-formed"_L1, "Mend the place."_L1},
    AuthorRule{"xml-depth"_L1, Error, "elements nested deeper than 100"_L1,
               "Nest fewer elements."_L1},
    AuthorRule{"xml-encoding"_L1, Error, "bytes that do not fit the encoding"_L1,
               "Save the file as UTF-8."_L1},
    AuthorRule{"xml-namespace"_L1, Warning, "a root in a namespace"_L1,
               R"(Take xmlns="..." out of the root's tag.)"_L1},
};

} // namespace

const QList<AuthorRule>& all()
{
    static const QList<AuthorRule> rules(kRules.cbegin(), kRules.cend());
    return rules;
}

const AuthorRule* find(QStringView id)
{
    const QList<AuthorRule>& rules = all();
    const auto found =
        std::lower_bound(rules.cbegin(), rules.cend(), id,
                         [](const AuthorRule& rule, QStringView name) { return rule.id < name; });
    return found != rules.cend() && found->id == id ? &*found : nullptr;
}

QString page(QStringView id)
{
    loadPages();
    if (!find(id))
        return QString();
    QFile file(u":/vidlets/rules/%1.md"_s.arg(id));
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

} // namespace Vidlets::AuthorRules
