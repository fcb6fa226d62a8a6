// SPDX-FileCopyrightText: 2026 The Vidlets developers
// SPDX-License-Identifier: MIT

#include "ScreenProbe.h"

#include "FrameWatch.h"
#include "Report.h"

#include <QMutexLocker>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <utility>

#include <xcb/xcb.h>

namespace {

constexpr double kNsPerSecond = 1e9;
constexpr unsigned long kPauseUs = 300;
constexpr uint32_t kAllPlanes = ~0U;

/// Its own connection to the display server.
class Screen
{
public:
    Screen()
        : m_connection(xcb_connect(nullptr, nullptr))
    {
        Report::verify(xcb_connection_has_error(m_connection) == 0, "there is an X display");
        m_root = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data->root;
    }

    ~Screen()
    {
        xcb_disconnect(m_connection);
    }

    void read(const QRect& area, std::vector<QRgb>& pixels) const
    {
        const xcb_get_image_cookie_t cookie = xcb_get_image(
            m_connection, XCB_IMAGE_FORMAT_Z_PIXMAP, m_root, static_cast<int16_t>(area.x()),
            static_cast<int16_t>(area.y()), static_cast<uint16_t>(area.width()),
            static_cast<uint16_t>(area.height()), kAllPlanes);
        const std::unique_ptr<xcb_get_image_reply_t, decltype(&std::free)> image(
            xcb_get_image_reply(m_connection, cookie, nullptr), &std::free);
        pixels.resize(static_cast<size_t>(area.width()) * static_cast<size_t>(area.height()));
        const size_t bytes = pixels.size() * sizeof(QRgb);
        Report::verify(image
                           && static_cast<size_t>(xcb_get_image_data_length(image.get())) == bytes,
                       "the screen gives 32 bits a pixel");
        std::memcpy(pixels.data(), xcb_get_image_data(image.get()), bytes);
        // Whatever the server leaves in the upper bits.
        std::transform(pixels.cbegin(), pixels.cend(), pixels.begin(),
                       [](QRgb pixel) { return pixel | 0xff000000U; });
    }

private:
    Q_DISABLE_COPY_MOVE(Screen)

    xcb_connection_t* m_connection;
    xcb_window_t m_root = 0;
};

} // namespace

ScreenProbe::ScreenProbe(const QRect& area, Look look)
    : m_area(area)
    , m_look(std::move(look))
    , m_thread(QThread::create([this] { watch(); }))
{
    m_clock.start();
    m_thread->start();
    waitUntil([this] { return !sights().empty(); }, "the first look at the screen");
    m_startNs = m_clock.nsecsElapsed();
}

ScreenProbe::~ScreenProbe()
{
    m_shouldStop = true;
    m_thread->wait();
    delete m_thread;
}

double ScreenProbe::waitForFirst(const char* what)
{
    double first = 0.0;
    waitUntil(
        [this, &first] {
            const std::vector<Sight> all = sights();
            const auto found = std::find_if(all.cbegin(), all.cend(), [](const Sight& sight) {
                return sight.seen != nothing();
            });
            if (found == all.cend())
                return false;
            first = found->seconds;
            return true;
        },
        what);
    return first;
}

std::vector<ScreenProbe::Sight> ScreenProbe::sights() const
{
    const QMutexLocker locker(&m_mutex);
    return m_sights;
}

void ScreenProbe::watch()
{
    const Screen screen;
    std::vector<QRgb> pixels;
    while (!m_shouldStop) {
        screen.read(m_area, pixels);
        const int seen = m_look(pixels);
        {
            const QMutexLocker locker(&m_mutex);
            if (m_sights.empty() || m_sights.back().seen != seen)
                m_sights.push_back({seconds(), seen});
        }
        QThread::usleep(kPauseUs);
    }
}

double ScreenProbe::seconds() const
{
    return static_cast<double>(m_clock.nsecsElapsed() - m_startNs) / kNsPerSecond;
}
