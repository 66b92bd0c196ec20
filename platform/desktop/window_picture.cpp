// What the view shows: the newest frame, and over it what the listener paints.
#include "platform/desktop/desktop_window_parts.h"

#include "platform/desktop/picture_fit.h"
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

} // namespace

// The picture stays in the middle until the next frame, so that a change of mode shows no empty screen.
void desktop_window::resize_canvas(int width, int height) {
    if (canvas.width() == width && canvas.height() == height) return;
    QImage resized(width, height, QImage::Format_RGB32);
    resized.fill(Qt::black);
    if (!canvas.isNull())
        QPainter(&resized).drawImage((width - canvas.width()) / 2, (height - canvas.height()) / 2, canvas);
    canvas = resized;
    paint_wanted = true;
    view->update();
}

void desktop_window::invalidate(bool erase) {
    if (gone) return;
    paint_wanted = true;
    erase_wanted |= erase;
    view->update();
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

void desktop_window::paint_view() {
    bool new_frame = false;
    if (const boxed_frame *newest = link->frames.take_newest();
        newest != nullptr && newest->width == canvas.width() && newest->height == canvas.height()) {
        for (int y = 0; y < newest->height; ++y)
            std::memcpy(canvas.scanLine(y), newest->pixels.data() + static_cast<ptrdiff_t>(y) * newest->width,
                        static_cast<size_t>(newest->width) * 4);
        new_frame = true;
    }
    // A frame that was on its way when the window was asked to paint must not cover what the listener
    // painted.
    if (paint_wanted || (new_frame && listener_paints)) {
        const bool erase = erase_wanted;
        paint_wanted = erase_wanted = false;
        deliver_paint(erase);
    }
    const qreal ratio = view->devicePixelRatioF();
    const int width = static_cast<int>(std::lround(view->width() * ratio));
    const int height = static_cast<int>(std::lround(view->height() * ratio));
    const placement at = fit_picture(canvas.width(), canvas.height(), width, height);
    QPainter on(view);
    on.scale(1 / ratio, 1 / ratio); // device pixels
    if (at.width != width || at.height != height) {
        on.fillRect(0, 0, width, at.y, Qt::black);
        on.fillRect(0, at.y + at.height, width, height - at.y - at.height, Qt::black);
        on.fillRect(0, at.y, at.x, at.height, Qt::black);
        on.fillRect(at.x + at.width, at.y, width - at.x - at.width, at.height, Qt::black);
    }
    on.setRenderHint(QPainter::SmoothPixmapTransform, at.width < canvas.width());
    on.drawImage(QRect(at.x, at.y, at.width, at.height), canvas);
    paint_notice(on, QRect(at.x, at.y, at.width, at.height));
}

} // namespace platform
