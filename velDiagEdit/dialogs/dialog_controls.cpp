#include "velDiagEdit/dialogs/dialog_controls.h"

#include <QApplication>
#include <QFocusEvent>
#include <QFontDatabase>
#include <QFontMetrics>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QRadioButton>
#include <QRegularExpression>
#include <QScreen>
#include <QToolButton>
#include <algorithm>
#include <limits>

namespace vde {

QFont DialogFont() {
    static const bool hasTahoma =
        QFontDatabase::families().contains(QStringLiteral("Tahoma"), Qt::CaseInsensitive);
    QFont f(hasTahoma ? QStringLiteral("Tahoma") : QStringLiteral("DejaVu Sans"));
    f.setStyleHint(QFont::SansSerif);
    f.setPixelSize(11);
    return f;
}

QWidget* DialogOwner() {
    return QApplication::activeWindow();
}

// ---- TDialogForm ----------------------------------------------------------------------------

TDialogForm::TDialogForm(QWidget* owner) : QDialog(owner) {
    setWindowFlags(Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint |
                   Qt::WindowSystemMenuHint | Qt::WindowCloseButtonHint |
                   Qt::MSWindowsFixedSizeDialogHint);
    setModal(true);
    setFont(DialogFont());
}

void TDialogForm::SetClientSize(int w, int h) {
    setFixedSize(w, h);
}

void TDialogForm::SetLeft(int left) {
    move(left, Top());
}

void TDialogForm::SetTop(int top) {
    move(Left(), top);
}

void TDialogForm::CentreOnOwner() {
    QWidget* owner = parentWidget() ? parentWidget()->window() : nullptr;
    if (!owner) {
        CentreOnScreen();
        return;
    }
    const QRect o = owner->frameGeometry();
    move((o.width() - width()) / 2 + o.left(), (o.height() - height()) / 2 + o.top());
}

void TDialogForm::CentreOnScreen() {
    const QScreen* screen = QGuiApplication::primaryScreen();
    if (!screen)
        return;
    const QRect s = screen->geometry();
    move((s.width() - width()) / 2, (s.height() - height()) / 2);
}

TModalResult TDialogForm::ShowModal() {
    return exec();
}

void TDialogForm::reject() {
    done(mrCancel);
}

// ---- TDialogButton --------------------------------------------------------------------------

TDialogButton::TDialogButton(TDialogForm* form, const QString& name, const QString& caption,
                             TModalResult result)
    : QPushButton(caption, form), FModalResult(result) {
    setObjectName(name);
    connect(this, &QPushButton::clicked, form, [form, this] {
        if (FModalResult != mrNone)
            form->done(FModalResult);
    });
}

void TDialogButton::SetBounds(int left, int top, int w, int h) {
    setGeometry(left, top, w, h);
}

// ---- TLabeledEdit ---------------------------------------------------------------------------

TLabeledEdit::TLabeledEdit(QWidget* parent, const QString& name, const QString& labelCaption,
                           const QString& text)
    : QLineEdit(text, parent), FLabel(new QLabel(labelCaption, parent)) {
    setObjectName(name);
    FLabel->setObjectName(name + QStringLiteral("Label"));
    FLabel->setBuddy(this);
}

void TLabeledEdit::SetBounds(int left, int top, int w, int h) {
    setGeometry(left, top, w, h);
    PlaceLabel();
}

void TLabeledEdit::PlaceLabel() {
    const QSize hint = FLabel->sizeHint();
    FLabel->setGeometry(x(), y() - hint.height() - 3, hint.width(), hint.height());
}

void TLabeledEdit::changeEvent(QEvent* event) {
    QLineEdit::changeEvent(event);
    if (event->type() == QEvent::EnabledChange)
        FLabel->setEnabled(isEnabled());
    else if (event->type() == QEvent::FontChange)
        PlaceLabel();
}

void TLabeledEdit::moveEvent(QMoveEvent* event) {
    QLineEdit::moveEvent(event);
    PlaceLabel();
}

void TLabeledEdit::focusInEvent(QFocusEvent* event) {
    QLineEdit::focusInEvent(event);
    if (event->reason() != Qt::MouseFocusReason)
        selectAll();
}

// ---- TUpDown --------------------------------------------------------------------------------

namespace {
// A whole number, however large: beyond the 64-bit range it saturates, which the clamp to the
// 32-bit range absorbs.
bool ParseWholeNumber(const QString& text, int64_t& value) {
    static const QRegularExpression re(QStringLiteral("^[+-]?[0-9]+$"));
    const QString t = text.trimmed();
    if (!re.match(t).hasMatch())
        return false;
    bool ok = false;
    value = t.toLongLong(&ok);
    if (!ok)
        value = t.startsWith(QLatin1Char('-')) ? std::numeric_limits<int64_t>::min()
                                               : std::numeric_limits<int64_t>::max();
    return true;
}
} // namespace

TUpDown::TUpDown(QWidget* parent, const QString& name)
    : QWidget(parent), FUp(new QToolButton(this)), FDown(new QToolButton(this)) {
    setObjectName(name);
    FUp->setObjectName(QStringLiteral("Up"));
    FDown->setObjectName(QStringLiteral("Down"));
    for (QToolButton* b : {FUp, FDown}) {
        b->setFocusPolicy(Qt::NoFocus);
        b->setAutoRepeat(true);
    }
    FUp->setArrowType(Qt::UpArrow);
    FDown->setArrowType(Qt::DownArrow);
    connect(FUp, &QToolButton::clicked, this, &TUpDown::StepUp);
    connect(FDown, &QToolButton::clicked, this, &TUpDown::StepDown);
}

void TUpDown::SetAssociate(QLineEdit* edit) {
    if (FAssociate)
        FAssociate->removeEventFilter(this);
    FAssociate = edit;
    if (!edit)
        return;
    edit->installEventFilter(this);
    connect(edit, &QLineEdit::editingFinished, this, [this] { SetPosition(Position()); });
    ShowPosition();
}

int32_t TUpDown::Clamp(int64_t value) const {
    const int64_t lo = std::min(FMin, FMax);
    const int64_t hi = std::max(FMin, FMax);
    return int32_t(std::clamp(value, lo, hi));
}

int32_t TUpDown::Position() {
    int64_t typed = 0;
    if (FAssociate && ParseWholeNumber(FAssociate->text(), typed))
        FPosition = Clamp(typed);
    return FPosition;
}

void TUpDown::SetPosition(int32_t value) {
    FPosition = Clamp(value);
    ShowPosition();
}

void TUpDown::ShowPosition() {
    if (FAssociate && FAssociate->text() != QString::number(FPosition))
        FAssociate->setText(QString::number(FPosition));
}

void TUpDown::Step(int64_t delta) {
    FPosition = Clamp(int64_t(Position()) + delta);
    ShowPosition();
}

void TUpDown::StepUp() {
    Step(FIncrement);
}

void TUpDown::StepDown() {
    Step(-int64_t(FIncrement));
}

void TUpDown::SetBounds(int left, int top, int w, int h) {
    setGeometry(left, top, w, h);
}

bool TUpDown::eventFilter(QObject* watched, QEvent* event) {
    if (watched == FAssociate && event->type() == QEvent::KeyPress && isEnabled()) {
        const auto* key = static_cast<QKeyEvent*>(event);
        if (key->key() == Qt::Key_Up) {
            StepUp();
            return true;
        }
        if (key->key() == Qt::Key_Down) {
            StepDown();
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}

void TUpDown::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    const int half = height() / 2;
    FUp->setGeometry(0, 0, width(), half);
    FDown->setGeometry(0, half, width(), height() - half);
}

// ---- TRadioGroup ----------------------------------------------------------------------------

TRadioGroup::TRadioGroup(QWidget* parent, const QString& name) : QGroupBox(parent) {
    setObjectName(name);
}

void TRadioGroup::AddItem(const QString& caption) {
    auto* b = new QRadioButton(caption, this);
    b->setObjectName(QStringLiteral("Item%1").arg(FButtons.size()));
    FButtons.push_back(b);
    ArrangeButtons();
    b->show();
}

QStringList TRadioGroup::Items() const {
    QStringList items;
    for (const QRadioButton* b : FButtons)
        items << b->text();
    return items;
}

QRadioButton* TRadioGroup::Button(int index) const {
    return index >= 0 && index < Count() ? FButtons[size_t(index)] : nullptr;
}

void TRadioGroup::SetItemIndex(int index) {
    index = std::clamp(index, -1, Count() - 1);
    if (index >= 0) {
        FButtons[size_t(index)]->setChecked(true);
        return;
    }
    // Exclusive buttons refuse to be unchecked one by one.
    for (QRadioButton* b : FButtons) {
        b->setAutoExclusive(false);
        b->setChecked(false);
        b->setAutoExclusive(true);
    }
}

int TRadioGroup::ItemIndex() const {
    for (int i = 0; i < Count(); ++i)
        if (FButtons[size_t(i)]->isChecked())
            return i;
    return -1;
}

void TRadioGroup::SetBounds(int left, int top, int w, int h) {
    setGeometry(left, top, w, h);
}

void TRadioGroup::FocusItem() {
    const int i = ItemIndex();
    if (QRadioButton* b = Button(i >= 0 ? i : 0))
        b->setFocus(Qt::OtherFocusReason);
}

void TRadioGroup::resizeEvent(QResizeEvent* event) {
    QGroupBox::resizeEvent(event);
    ArrangeButtons();
}

void TRadioGroup::changeEvent(QEvent* event) {
    QGroupBox::changeEvent(event);
    if (event->type() == QEvent::FontChange)
        ArrangeButtons();
}

// One column: the height below a text line's worth of top margin is shared out equally, the
// remainder split above and below.
void TRadioGroup::ArrangeButtons() {
    if (FButtons.empty())
        return;
    const int count = Count();
    const int textHeight = QFontMetrics(font()).height();
    const int room = height() - textHeight - 5;
    const int buttonHeight = room / count;
    const int topMargin = textHeight + 1 + (room % count) / 2;
    for (int i = 0; i < count; ++i)
        FButtons[size_t(i)]->setGeometry(8, i * buttonHeight + topMargin, width() - 10,
                                         buttonHeight);
}

} // namespace vde
