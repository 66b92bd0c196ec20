// Messages on the picture: a line at its lower edge, for two seconds.
#include "platform/desktop/desktop_window_parts.h"

#include <QtCore/QTimer>
#include <QtGui/QPainter>
#include <algorithm>

namespace platform {

namespace {

constexpr int shown_ms = 2000;

} // namespace

void desktop_window::notify(const std::string &text) {
    if (gone) return;
    if (notice_time == nullptr) {
        notice_time = new QTimer(view);
        notice_time->setSingleShot(true);
        QObject::connect(notice_time, &QTimer::timeout, view, [this] {
            notice.clear();
            view->update();
        });
    }
    notice = QString::fromStdString(text);
    notice_time->start(shown_ms);
    view->update();
}

// `area`: the picture, in the painter's coordinates. A text that is too long loses its middle, as the end of
// a path and the reason behind it say the most.
void desktop_window::paint_notice(QPainter &on, const QRect &area) {
    if (notice.isEmpty() || area.width() < 40) return;
    QFont font = view->font();
    font.setPixelSize(std::clamp(area.height() / 28, 11, 48));
    on.setFont(font);
    const QFontMetrics metrics(font);
    const int edge = metrics.height() / 2;
    const QString line = metrics.elidedText(notice, Qt::ElideMiddle, area.width() - 4 * edge);
    const QRect box(area.left() + edge, area.bottom() - edge - 2 * metrics.height(),
                    metrics.horizontalAdvance(line) + 2 * edge, metrics.height() + edge);
    on.setRenderHint(QPainter::Antialiasing);
    on.setPen(Qt::NoPen);
    on.setBrush(QColor(0, 0, 0, 190));
    on.drawRoundedRect(box, edge / 2.0, edge / 2.0);
    on.setPen(Qt::white);
    on.drawText(box, Qt::AlignCenter, line);
}

} // namespace platform
