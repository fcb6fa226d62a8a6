// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#ifndef VLASKINGVIEW_H
#define VLASKINGVIEW_H

#include <QScopedValueRollback>

namespace Vidlets {

class VLView;

/**
 * Tells the manager which view asks for a translation, beyond the host, whose operation on the way
 * knows of texts alone.
 *
 * Internal to the library. To be held for as long as the question takes, on the user-interface
 * thread.
 */
class VLAskingView
{
public:
    explicit VLAskingView(const VLView* view)
        : m_rollback(s_current, view)
    {
    }

    /// The view that asks, or null where the question comes from elsewhere.
    static const VLView* current()
    {
        return s_current;
    }

private:
    inline static const VLView* s_current = nullptr;

    QScopedValueRollback<const VLView*> m_rollback;
};

} // namespace Vidlets

#endif
