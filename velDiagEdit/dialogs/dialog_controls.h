#pragma once
// The small set of form controls the value dialogs are built from: a modal form with a fixed
// client area, an edit with its label above it, an up-down control bound to an edit, a radio
// group and buttons that end the form with a modal result.

#include "velDiagEdit/platform/dialog_service.h"
#include "velDiagEdit/velDiagEdit_export.h"

#include <QDialog>
#include <QFont>
#include <QGroupBox>
#include <QLineEdit>
#include <QPushButton>
#include <QStringList>
#include <cstdint>
#include <vector>

class QLabel;
class QRadioButton;
class QToolButton;

namespace vde {

// The dialogs' font: Tahoma at 11 pixels where the system has it, DejaVu Sans at 11 pixels
// otherwise (the forms are laid out in pixels for a font of that size).
VELDIAGEDIT_EXPORT QFont DialogFont();

// The window the dialogs are centred on: the application's active window, if any.
VELDIAGEDIT_EXPORT QWidget* DialogOwner();

// A modal form. Its size is its client area and is fixed; Left/Top are the window's place on
// the screen. Closing the window or pressing Escape ends it with mrCancel.
class VELDIAGEDIT_EXPORT TDialogForm : public QDialog {
    Q_OBJECT
public:
    explicit TDialogForm(QWidget* owner);

    void SetClientSize(int width, int height);
    int ClientWidth() const { return width(); }
    int ClientHeight() const { return height(); }
    int Left() const { return pos().x(); }
    int Top() const { return pos().y(); }
    void SetLeft(int left);
    void SetTop(int top);
    // Centred on the owner window, or on the screen without one. The form's own frame is left
    // out: most platforms tell it only once the window is shown.
    void CentreOnOwner();
    void CentreOnScreen();

    // Shows the form modally; the modal result it was left with.
    TModalResult ShowModal();
    TModalResult ModalResult() const { return result(); }

public slots:
    void reject() override;
};

// A push button that ends its form with a modal result (mrNone: it does not end the form).
// Default: Enter presses it; Cancel: Escape ends the form as it does.
class VELDIAGEDIT_EXPORT TDialogButton : public QPushButton {
    Q_OBJECT
public:
    TDialogButton(TDialogForm* form, const QString& name, const QString& caption,
                  TModalResult result);
    TModalResult ModalResult() const { return FModalResult; }
    void SetBounds(int left, int top, int width, int height);

private:
    TModalResult FModalResult;
};

// An edit with its label above it, the label's left edge on the edit's and 3 pixels between
// them. The label is enabled and disabled with the edit. Taking the focus other than by a mouse
// click selects the whole text, so that typing replaces it.
class VELDIAGEDIT_EXPORT TLabeledEdit : public QLineEdit {
    Q_OBJECT
public:
    TLabeledEdit(QWidget* parent, const QString& name, const QString& labelCaption,
                 const QString& text);
    QLabel* EditLabel() const { return FLabel; }
    void SetBounds(int left, int top, int width, int height);

protected:
    void changeEvent(QEvent* event) override;
    void moveEvent(QMoveEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;

private:
    void PlaceLabel();
    QLabel* FLabel;
};

// An up-down control bound to an edit (its associate). Setting the position clamps it to
// [Min, Max] and shows it in the edit as a plain integer; changing the range alone does not move
// it. A number typed into the edit becomes the position, clamped to the range, when the position
// is next read (and when the edit is left); text that is not a number leaves the last position.
// The arrows (and the Up and Down keys in the edit) first take in what was typed, then step by
// the increment, stopping at the ends of the range.
class VELDIAGEDIT_EXPORT TUpDown : public QWidget {
    Q_OBJECT
public:
    TUpDown(QWidget* parent, const QString& name);

    void SetAssociate(QLineEdit* edit);
    QLineEdit* Associate() const { return FAssociate; }
    int32_t Min() const { return FMin; }
    int32_t Max() const { return FMax; }
    int32_t Increment() const { return FIncrement; }
    void SetMin(int32_t value) { FMin = value; }
    void SetMax(int32_t value) { FMax = value; }
    void SetIncrement(int32_t value) { FIncrement = value; }
    // Reads the edit first (see above).
    int32_t Position();
    void SetPosition(int32_t value);
    void StepUp();
    void StepDown();
    QToolButton* UpButton() const { return FUp; }
    QToolButton* DownButton() const { return FDown; }
    void SetBounds(int left, int top, int width, int height);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    int32_t Clamp(int64_t value) const;
    void Step(int64_t delta);
    void ShowPosition();

    QLineEdit* FAssociate = nullptr;
    QToolButton* FUp;
    QToolButton* FDown;
    int32_t FMin = 0;
    int32_t FMax = 100;
    int32_t FIncrement = 1;
    int32_t FPosition = 0;
};

// A group of radio buttons, one per item, in one column spread over the group's height.
// ItemIndex is the checked item, -1 for none.
class VELDIAGEDIT_EXPORT TRadioGroup : public QGroupBox {
    Q_OBJECT
public:
    TRadioGroup(QWidget* parent, const QString& name);

    void AddItem(const QString& caption);
    QStringList Items() const;
    int Count() const { return int(FButtons.size()); }
    QRadioButton* Button(int index) const;
    // An index below -1 becomes -1, one past the last item the last item.
    void SetItemIndex(int index);
    int ItemIndex() const;
    void SetBounds(int left, int top, int width, int height);
    // Focuses the checked button (the first one if none is checked).
    void FocusItem();

protected:
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void ArrangeButtons();
    std::vector<QRadioButton*> FButtons;
};

} // namespace vde
