#include "recording/ChoseDurationViewController.h"

#include <climits>
#include <cmath>

#include <QGridLayout>
#include <QKeyEvent>
#include <QPainter>
#include <QVBoxLayout>

#include "platform/foundation/PreferenceSchema.h"
#include "platform/foundation/Preferences.h"
#include "platform/foundation/Strings.h"
#include "platform/ui/Button.h"
#include "platform/ui/Label.h"
#include "platform/ui/View.h"

namespace {

const QColor backdropColor(0, 0, 0, 90);
const QColor cardColor(28, 28, 30, 240);
const QColor closeBackgroundColor(255, 255, 255, 38);
// The camera's accent, as on the record screen's active controls.
const QColor accentColor(255, 214, 10);
constexpr int visibleRows = 5;

// A thin ×, drawn at three times its size so that it stays crisp when scaled down.
QIcon closeImage(int side) {
    constexpr int scale = 3;
    QPixmap pixmap(side * scale, side * scale);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(QColor(235, 235, 245), 2.2 * scale, Qt::SolidLine, Qt::RoundCap));
    const qreal inset = 1.5 * scale;
    const qreal far = side * scale - inset;
    painter.drawLine(QPointF(inset, inset), QPointF(far, far));
    painter.drawLine(QPointF(far, inset), QPointF(inset, far));
    return QIcon(pixmap);
}

QFont fontOf(const QWidget* widget, int pixelSize, QFont::Weight weight) {
    QFont font = widget->font();
    font.setPixelSize(pixelSize);
    font.setWeight(weight);
    return font;
}

} // namespace

ChoseDurationViewController::ChoseDurationViewController(QObject* parent)
    : ui::ViewController(parent) {
    // A card over the recording screen, which stays visible, dimmed, around it.
    setModalPresentationStyle(ui::ModalPresentationStyle::overCurrentContext);
}

void ChoseDurationViewController::loadView() {
    auto* backdrop = new ui::View;
    backdrop->setBackgroundColor(backdropColor);
    setView(backdrop);

    auto* card = new ui::View(backdrop);
    card->setObjectName(QStringLiteral("card"));
    card->setBackgroundColor(cardColor);
    card->setCornerRadius(18);
    card->setFixedWidth(cardWidth);

    durationLabel = new ui::Label(card);
    durationLabel->setTextColor(Qt::white);
    durationLabel->setFont(fontOf(durationLabel, 17, QFont::DemiBold));
    durationLabel->setAlignment(Qt::AlignCenter);

    closeButton = new ui::Button(card);
    closeButton->setFixedSize(30, 30);
    closeButton->setBackgroundColor(closeBackgroundColor);
    closeButton->setCornerRadius(15);
    closeButton->setImage(closeImage(11));
    closeButton->setImageSize(QSize(11, 11));
    closeButton->addTarget(
        this, [this](ui::Control* sender) { dismiss(sender); }, ui::Control::touchUpInside);

    // The header centres the title on the card, not on what the close button leaves of it.
    auto* header = new QGridLayout;
    header->setContentsMargins(0, 0, 0, 0);
    header->addWidget(durationLabel, 0, 0, Qt::AlignCenter);
    header->addWidget(closeButton, 0, 0, Qt::AlignRight | Qt::AlignVCenter);
    header->setRowMinimumHeight(0, 30);

    auto* pickerContainer = new ui::View(card);
    pickerContainer->setObjectName(QStringLiteral("pickerContainer"));
    // The rows are black, so the wheel sits on white.
    pickerContainer->setBackgroundColor(Qt::white);
    pickerView = new ui::PickerView(pickerContainer);
    pickerView->setMinimumHeight(visibleRows * pickerView->rowHeight());
    pickerView->setDataSource(this);
    pickerView->setDelegate(this);
    auto* containerLayout = new QVBoxLayout(pickerContainer);
    containerLayout->setContentsMargins(0, 4, 0, 4);
    containerLayout->addWidget(pickerView);

    doneButton = new ui::Button(card);
    doneButton->setTitle(foundation::Strings::localizedString("cam_done"));
    doneButton->setTitleColor(Qt::black);
    doneButton->setBackgroundColor(accentColor);
    doneButton->setCornerRadius(12);
    doneButton->setFont(fontOf(doneButton, 16, QFont::DemiBold));
    doneButton->setFixedHeight(46);
    doneButton->addTarget(
        this, [this](ui::Control* sender) { save(sender); }, ui::Control::touchUpInside);

    auto* cardLayout = new QVBoxLayout(card);
    cardLayout->setContentsMargins(16, 14, 16, 16);
    cardLayout->setSpacing(14);
    cardLayout->addLayout(header);
    cardLayout->addWidget(pickerContainer);
    cardLayout->addWidget(doneButton);

    auto* backdropLayout = new QVBoxLayout(backdrop);
    backdropLayout->setContentsMargins(16, 16, 16, 16);
    backdropLayout->addWidget(card, 0, Qt::AlignCenter);

    QWidget::setTabOrder(pickerView, doneButton);
    QWidget::setTabOrder(doneButton, closeButton);
    // Esc reaches the backdrop from whichever child has the focus.
    backdrop->installEventFilter(this);
}

void ChoseDurationViewController::viewDidLoad() {
    ui::ViewController::viewDidLoad();
    if (!pickerView || !durationLabel)
        qFatal("ChoseDurationViewController: the picker or the title label is missing");
    auto* container = qobject_cast<ui::View*>(pickerView->parentWidget());
    if (!container)
        qFatal("ChoseDurationViewController: the picker has no container to round");

    const float stored =
        foundation::Preferences::standard().floatForKey(foundation::PreferenceSchema::zoomDuration);
    const float seconds = std::trunc(stored);
    if (!std::isfinite(seconds) || seconds < -0x1p63f || seconds >= 0x1p63f)
        qFatal("ChoseDurationViewController: \"zoomDuration\" %g is not a number of seconds",
               double(stored));
    // Out-of-range durations are left to the picker, which shows the nearest end.
    const qint64 wholeSeconds = std::clamp<qint64>(qint64(seconds), INT_MIN + 1LL, INT_MAX);
    pickerView->selectRow(int(wholeSeconds - 1), 0, false);

    container->setCornerRadius(6.0);
    durationLabel->setText(foundation::Strings::localizedString("cam_duration"));
}

void ChoseDurationViewController::viewDidAppear(bool animated) {
    ui::ViewController::viewDidAppear(animated);
    // So that the arrow keys turn the wheel and Esc closes without a click first.
    if (pickerView)
        pickerView->setFocus(Qt::OtherFocusReason);
}

int ChoseDurationViewController::numberOfComponents(ui::PickerView*) {
    return 1;
}

int ChoseDurationViewController::numberOfRowsInComponent(ui::PickerView*, int) {
    return int(timeArrayInSeconds.size());
}

ui::PickerViewDelegate::Title ChoseDurationViewController::attributedTitleForRow(ui::PickerView*,
                                                                                 int row, int) {
    if (row < 0 || row >= int(timeArrayInSeconds.size()))
        qFatal("ChoseDurationViewController: no duration in row %d", row);
    return {QString::number(timeArrayInSeconds[size_t(row)]) + QLatin1Char(' ') +
                foundation::Strings::localizedString("cam_sec"),
            Qt::black};
}

void ChoseDurationViewController::didSelectRow(ui::PickerView*, int row, int) {
    if (row < 0 || row >= int(timeArrayInSeconds.size()))
        qFatal("ChoseDurationViewController: no duration in row %d", row);
    foundation::Preferences::standard().setFloat(foundation::PreferenceSchema::zoomDuration,
                                                 float(timeArrayInSeconds[size_t(row)]));
}

void ChoseDurationViewController::dismiss(ui::Control*) {
    // The row the wheel shows is the choice, even while it still turns.
    if (pickerView)
        pickerView->finishTurning();
    ui::ViewController::dismiss(true);
}

void ChoseDurationViewController::save(ui::Control* sender) {
    dismiss(sender);
}

bool ChoseDurationViewController::eventFilter(QObject* watched, QEvent* event) {
    if (isViewLoaded() && watched == view() && event->type() == QEvent::KeyPress &&
        static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape) {
        dismiss(nullptr);
        return true;
    }
    return ui::ViewController::eventFilter(watched, event);
}
