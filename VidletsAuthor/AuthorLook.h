// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef AUTHORLOOK_H
#define AUTHORLOOK_H

#include <QString>

class VLContext;

namespace Vidlets {

/// What a user may have chosen that changes the look of a tip.
struct AuthorLook
{
    QString locale;
    bool isDark = false;
    bool isRightToLeft = false;
    double scale = 1.0;
    double textScale = 1.0;
    /// Whether the simple scene is wanted.
    bool isSimple = false;

    /// Gives the application, which needs to be a QApplication, the colours and the direction.
    void applyToApplication() const;
    /// Sets what the library reads from @p context. The fallback for content stays as it is.
    void applyToContext(VLContext& context) const;
};

} // namespace Vidlets

#endif
