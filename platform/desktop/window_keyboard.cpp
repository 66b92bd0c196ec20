// The page with the machine's keyboard: a window beside the main one, which never takes the keyboard from it.
#include "platform/desktop/desktop_window_parts.h"

#include "platform/desktop/dialog_parts.h"
#include <QtCore/QTimer>
#include <QtGui/QMouseEvent>
#include <QtGui/QPainter>
#include <QtGui/QScreen>
#include <QtWidgets/QToolTip>
#include <algorithm>
#include <set>

namespace platform {

namespace {

constexpr int look_ms = 33;
constexpr int quarter = 9;      // points of the first size
constexpr double shrink = 0.06; // of a key, that separates it from its neighbours

} // namespace

class desktop_window::keyboard_widget : public QWidget {
  public:
    keyboard_widget(desktop_window &w, QWidget *owner)
        : QWidget(owner, Qt::Tool | Qt::WindowDoesNotAcceptFocus), window_of(w) {
        setAttribute(Qt::WA_ShowWithoutActivating);
        setFocusPolicy(Qt::NoFocus);
        auto *timer = new QTimer(this);
        connect(timer, &QTimer::timeout, this, [this] { look(); });
        timer->start(look_ms);
    }

    void take(const keyboard_page &shows) {
        page = shows;
        setWindowTitle(text_of(page.title));
        columns = lines = 1;
        for (const shown_key &key : page.keys) {
            columns = std::max(columns, key.x + key.width);
            lines = std::max(lines, key.y + key.height);
        }
        down.assign(page.keys.size(), false);
        setMinimumSize(columns * 5, lines * 5);
        const QSize wanted(columns * quarter, lines * quarter + hint_height());
        resize(wanted.scaled(within_desktop(*this, wanted), Qt::KeepAspectRatio));
        update();
    }
    // What the mouse holds is let go.
    void release_all() {
        release(pressed);
        for (const size_t key : std::set<size_t>(held)) release(key);
    }

  protected:
    void paintEvent(QPaintEvent *) override {
        QPainter on(this);
        on.fillRect(rect(), QColor(0x30, 0x30, 0x34));
        on.setRenderHint(QPainter::Antialiasing);
        for (size_t i = 0; i < page.keys.size(); ++i) paint_key(on, i);
        QFont small = font();
        small.setPixelSize(std::max(9, hint_height() * 3 / 5));
        on.setFont(small);
        on.setPen(QColor(0xB0, 0xB0, 0xB8));
        on.drawText(QRectF(8, height() - hint_height(), width() - 16, hint_height()), Qt::AlignVCenter,
                    QFontMetrics(small).elidedText(text_of(page.hint), Qt::ElideRight, width() - 16));
    }
    void mousePressEvent(QMouseEvent *e) override {
        const size_t key = key_at(e->position());
        if (key >= page.keys.size()) return;
        if (e->button() == Qt::RightButton || page.keys[key].kind != shown_key::plain)
            held.contains(key) ? release(key) : hold(key);
        else if (e->button() == Qt::LeftButton)
            press(pressed = key);
    }
    void mouseReleaseEvent(QMouseEvent *e) override {
        if (e->button() != Qt::LeftButton || pressed >= page.keys.size()) return;
        release(pressed);
        pressed = none;
        for (const size_t key : std::set<size_t>(held))
            if (page.keys[key].kind == shown_key::until_next) release(key);
    }
    void hideEvent(QHideEvent *) override { release_all(); }

  private:
    static constexpr size_t none = static_cast<size_t>(-1);

    int hint_height() const { return fontMetrics().height() + 6; }
    QRectF place_of(const shown_key &key) const {
        const double across = static_cast<double>(width()) / columns,
                     along = static_cast<double>(height() - hint_height()) / lines;
        const double edge = 4 * shrink * std::min(across, along);
        return QRectF(key.x * across, key.y * along, key.width * across, key.height * along)
            .adjusted(edge, edge, -edge, -edge);
    }
    size_t key_at(QPointF at) const {
        for (size_t i = 0; i < page.keys.size(); ++i)
            if (place_of(page.keys[i]).contains(at)) return i;
        return none;
    }
    void paint_key(QPainter &on, size_t i) const {
        const shown_key &key = page.keys[i];
        const QRectF place = place_of(key);
        on.setPen(Qt::NoPen);
        on.setBrush(down[i] ? QColor(0xF0, 0xA0, 0x20) : QColor(0xE4, 0xE2, 0xD8));
        on.drawRoundedRect(place, place.height() / 8, place.height() / 8);
        if (held.contains(i)) { // by the mouse
            on.setPen(QPen(QColor(0xC0, 0x30, 0x20), 2));
            on.setBrush(Qt::NoBrush);
            on.drawRoundedRect(place.adjusted(1, 1, -1, -1), place.height() / 8, place.height() / 8);
        }
        const QRectF inside = place.adjusted(4, 2, -4, -2);
        on.setPen(QColor(0x20, 0x20, 0x20));
        put_text(on, inside, Qt::AlignLeft | Qt::AlignTop, text_of(key.label), place_height() * 0.30);
        on.setPen(QColor(0x20, 0x50, 0xA0));
        put_text(on, inside, Qt::AlignRight | Qt::AlignBottom, text_of(key.host), place_height() * 0.23);
    }
    double place_height() const { return 4.0 * (height() - hint_height()) / lines; } // of one key
    // As large as asked for, or as fits.
    void put_text(QPainter &on, const QRectF &place, int how, const QString &text, double size) const {
        if (text.isEmpty()) return;
        QFont sized = font();
        sized.setPixelSize(std::max(6, static_cast<int>(size)));
        int widest = 1;
        for (const QString &line : text.split(u'\n'))
            widest = std::max(widest, QFontMetrics(sized).horizontalAdvance(line));
        if (widest > place.width())
            sized.setPixelSize(std::max(6, static_cast<int>(sized.pixelSize() * place.width() / widest)));
        on.setFont(sized);
        on.drawText(place, how | Qt::TextDontClip, text);
    }

    void look() {
        if (!isVisible()) return;
        bool changed = false;
        for (size_t i = 0; i < page.keys.size(); ++i) {
            const bool now = window_of.listener.is_key_down(page.keys[i].code);
            changed |= now != down[i];
            down[i] = now;
        }
        if (changed) update();
    }
    void press(size_t key) { window_of.post(wm_key_down, page.keys[key].code, 0); }
    void hold(size_t key) {
        held.insert(key);
        press(key);
        update();
    }
    void release(size_t key) {
        if (key >= page.keys.size()) return;
        held.erase(key);
        window_of.post(wm_key_up, page.keys[key].code, 0);
        update();
    }

    desktop_window &window_of;
    keyboard_page page;
    int columns = 1, lines = 1; // in quarters of a key
    std::vector<bool> down;
    std::set<size_t> held;
    size_t pressed = none;
};

// Below the main window where there is room for it.
void desktop_window::show_keyboard(const keyboard_page *page) {
    if (gone) return;
    if (page == nullptr) {
        if (keyboard != nullptr) keyboard->hide();
        return;
    }
    const bool first = keyboard == nullptr;
    if (first) keyboard = new keyboard_widget(*this, frame.get());
    const bool shown = keyboard->isVisible();
    const QSize size = keyboard->size();
    keyboard->release_all();
    keyboard->take(*page);
    if (!first) keyboard->resize(size);
    if (shown) return;
    if (first && frame->screen() != nullptr) {
        const QRect desktop = frame->screen()->availableGeometry(), of_frame = frame->frameGeometry();
        keyboard->move(std::clamp(of_frame.center().x() - keyboard->width() / 2, desktop.left(),
                                  std::max(desktop.left(), desktop.right() - keyboard->width())),
                       std::clamp(of_frame.bottom() + 1, desktop.top(),
                                  std::max(desktop.top(), desktop.bottom() - keyboard->height() - 40)));
    }
    keyboard->show();
}

bool desktop_window::keyboard_shown() const { return !gone && keyboard != nullptr && keyboard->isVisible(); }

} // namespace platform
