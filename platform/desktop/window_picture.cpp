// What the view shows: the newest frame, over it what the listener paints, enlarged to the view's pixels.
#include "platform/desktop/desktop_window_parts.h"

#include "platform/file.h"
#include <QtCore/QBuffer>
#include <QtGui/QClipboard>
#include <QtGui/QGuiApplication>
#include <QtGui/QPainter>
#include <cmath>
#include <cstring>

namespace platform {

namespace {

class canvas_painter : public painter {
  public:
    explicit canvas_painter(QImage &canvas) : on(&canvas) {}
    void fill(const rectangle &area, uint32_t rgb) override {
        on.fillRect(QRect(area.left, area.top, area.right - area.left, area.bottom - area.top),
                    QColor::fromRgb(rgb));
        drew = true;
    }
    void draw(const picture &image, int x, int y) override {
        const QImage wrapped(reinterpret_cast<const uchar *>(image.pixels), image.width, image.height,
                             image.width * 4, QImage::Format_RGB32);
        on.drawImage(x, y, wrapped);
        drew = true;
    }
    bool drew = false;

  private:
    QPainter on;
};

// Of 640 x 400 pixels on the monitor, whose pixels are taller than they are wide.
int monitor_height(int canvas_height) { return canvas_height * 6 / 5; }

} // namespace

// The picture stays in the middle until the next frame, so that a change of mode shows no empty screen.
void desktop_window::resize_canvas(int width, int height) {
    if (canvas.width() == width && canvas.height() == height) return;
    QImage resized(width, height, QImage::Format_RGB32);
    resized.fill(Qt::black);
    if (!canvas.isNull())
        QPainter(&resized).drawImage((width - canvas.width()) / 2, (height - canvas.height()) / 2, canvas);
    canvas = resized;
    place_picture();
    paint_wanted = true;
    ask_repaint();
}

void desktop_window::set_view(const view_settings &settings) {
    looks = settings;
    place_picture();
}

// The pixels of the screen that the canvas is enlarged to, for the view's size as it is now.
void desktop_window::place_picture() {
    if (view == nullptr || canvas.isNull()) return;
    const qreal ratio = view->devicePixelRatioF();
    const int width = static_cast<int>(std::lround(view->width() * ratio));
    const int height = static_cast<int>(std::lround(view->height() * ratio));
    const placement at = fit_picture(canvas.width(), canvas.height(),
                                     looks.four_thirds ? monitor_height(canvas.height()) : canvas.height(),
                                     width, height, looks.whole_factors);
    const shape wanted{at, canvas.width(), canvas.height(), looks.look};
    if (wanted == shown_shape) {
        view->update();
        return;
    }
    shown_shape = wanted;
    if (at.width > 0) scaler.set_up(canvas.width(), canvas.height(), at.width, at.height, looks.look);
    show_canvas();
    view->update();
}

void desktop_window::invalidate(bool erase) {
    if (gone) return;
    paint_wanted = true;
    erase_wanted |= erase;
    ask_repaint();
}

void desktop_window::deliver_paint(bool erase) {
    canvas_painter on(canvas);
    painting = &on;
    if (erase) send(wm_erase_background, 0, 0);
    on.drew = false;
    send(wm_paint, 0, 0);
    painting = nullptr;
    listener_paints = on.drew;
}

// A frame has come, or the listener is to paint.
void desktop_window::refresh() {
    if (gone) return;
    bool new_frame = false;
    if (const boxed_frame *newest = link->frames.take_newest();
        newest != nullptr && newest->width == canvas.width() && newest->height == canvas.height()) {
        std::memcpy(canvas.bits(), newest->pixels.data(), newest->pixels.size() * 4);
        new_frame = true;
    }
    // A frame that was on its way when the window was asked to paint must not cover what the listener
    // painted.
    if (paint_wanted || (new_frame && listener_paints)) {
        const bool erase = erase_wanted;
        paint_wanted = erase_wanted = false;
        deliver_paint(erase);
    }
    show_canvas();
}

// Brings the rows that have changed to the screen.
void desktop_window::show_canvas() {
    const placement &at = shown_shape.at;
    if (at.width <= 0) return;
    const qreal ratio = view->devicePixelRatioF();
    for (const row_span &rows : scaler.show(reinterpret_cast<const uint32_t *>(canvas.constBits()))) {
        const int top = static_cast<int>(std::floor((at.y + rows.first) / ratio));
        const int bottom = static_cast<int>(std::ceil((at.y + rows.end) / ratio));
        view->update(0, top, view->width(), bottom - top);
    }
}

void desktop_window::copy_picture() { QGuiApplication::clipboard()->setImage(canvas); }

bool desktop_window::save_picture(const std::string &path) {
    QByteArray png;
    QBuffer buffer(&png);
    return buffer.open(QIODevice::WriteOnly) && canvas.save(&buffer, "PNG") &&
           atomic_write(path, png.constData(), static_cast<size_t>(png.size()));
}

void desktop_window::paint_view() {
    const placement &at = shown_shape.at;
    const qreal ratio = view->devicePixelRatioF();
    const int width = static_cast<int>(std::lround(view->width() * ratio));
    const int height = static_cast<int>(std::lround(view->height() * ratio));
    QPainter on(view);
    // Device pixels; at a density of one and a half the view may begin in the middle of one.
    const QPointF origin = QPointF(view->mapTo(view->window(), QPoint(0, 0))) * ratio;
    on.translate((std::round(origin.x()) - origin.x()) / ratio,
                 (std::round(origin.y()) - origin.y()) / ratio);
    on.scale(1 / ratio, 1 / ratio);
    if (at.width != width || at.height != height) {
        on.fillRect(0, 0, width, at.y, Qt::black);
        on.fillRect(0, at.y + at.height, width, height - at.y - at.height, Qt::black);
        on.fillRect(0, at.y, at.x, at.height, Qt::black);
        on.fillRect(at.x + at.width, at.y, width - at.x - at.width, at.height, Qt::black);
    }
    if (at.width <= 0) return;
    const QImage picture(reinterpret_cast<const uchar *>(scaler.pixels()), at.width, at.height, at.width * 4,
                         QImage::Format_RGB32);
    on.drawImage(at.x, at.y, picture);
    paint_notice(on, QRect(at.x, at.y, at.width, at.height));
}

} // namespace platform
