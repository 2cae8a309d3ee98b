#pragma once

#include <functional>

#include <QObject>
#include <QPointer>
#include <QRect>
#include <QSize>

class QWidget;

namespace ui {

class Window;

// The platform's raw values.
enum class ModalPresentationStyle {
    fullScreen = 0,
    currentContext = 3,
    overCurrentContext = 6,
};

// One screen: owns a lazily created view and receives the appearance calls of modal presentation.
//
// Presenting takes ownership of the presented controller (it becomes a QObject child of its
// presenter); its view is placed in the window above the presenter's: the whole window for
// fullScreen, the presenter's view area otherwise. fullScreen and currentContext hide the
// presenter's view once the transition ends; overCurrentContext leaves it shown underneath and the
// presented view keeps the translucent background a plain widget has, for the dialog to fill.
// A dismissed controller is deleted later, after its completion ran: keep a QPointer to check it.
class ViewController : public QObject {
    Q_OBJECT

public:
    static constexpr double transitionDuration = 0.3;

    explicit ViewController(QObject* parent = nullptr);
    ~ViewController() override;

    // Loads the view on first use: loadView(), then viewDidLoad() once.
    QWidget* view();
    bool isViewLoaded() const { return !controllerView.isNull(); }
    // Takes ownership; meant for loadView(). A loaded view cannot be replaced.
    void setView(QWidget* view);
    // The window the view is in, without loading it.
    Window* window() const;

    // Ignored on a desktop; a phone shell hides its status bar by full-screening the window.
    virtual bool prefersStatusBarHidden() const { return false; }
    void setNeedsStatusBarAppearanceUpdate();

    // Refused with a warning, without calling the completion, while this controller presents
    // something, is being dismissed or is not in a window; the refused controller is then
    // parented to this one.
    void present(ViewController* controller, bool animated, std::function<void()> completion = {});
    // Dismisses what this controller presents, with everything above it; if it presents nothing,
    // asks its presenter to dismiss it. A presentation still fading in is finished first. Does
    // nothing when there is nothing to dismiss or the dismissal already runs.
    void dismiss(bool animated, std::function<void()> completion = {});
    ViewController* presentingViewController() const { return controllerPresenting; }
    ViewController* presentedViewController() const { return controllerPresented; }
    bool isBeingPresented() const { return controllerTransition == Transition::presenting; }
    bool isBeingDismissed() const { return controllerTransition == Transition::dismissing; }

    ModalPresentationStyle modalPresentationStyle() const { return controllerStyle; }
    void setModalPresentationStyle(ModalPresentationStyle style) { controllerStyle = style; }

    // Brackets the appearance calls of one transition, for containers and the window. Repeated
    // calls in the same direction are ignored, so each hook runs once per transition.
    void beginAppearanceTransition(bool isAppearing, bool animated);
    void endAppearanceTransition();

protected:
    // Creates the view with setView(); the default is a plain QWidget.
    virtual void loadView();
    virtual void viewDidLoad() {}
    virtual void viewWillAppear(bool /*animated*/) {}
    virtual void viewDidAppear(bool /*animated*/) {}
    virtual void viewWillDisappear(bool /*animated*/) {}
    virtual void viewDidDisappear(bool /*animated*/) {}
    // The window this controller is shown in is being resized to size; the view still has its
    // old size.
    virtual void viewWillTransition(QSize /*size*/) {}

private:
    friend class Window;

    enum class Appearance { disappeared, appearing, appeared, disappearing };
    enum class Transition { none, presenting, dismissing };

    bool hidesPresenter() const;
    // Where a presented controller's view lies, in its window's coordinates.
    QRect presentationFrame() const;
    void refuse(ViewController* controller, const char* reason);
    void completeTransition();
    void finishRunningPresentations();

    QPointer<QWidget> controllerView;
    bool viewDidLoadCalled = false;
    QPointer<ViewController> controllerPresenting;
    QPointer<ViewController> controllerPresented;
    ModalPresentationStyle controllerStyle = ModalPresentationStyle::fullScreen;
    Appearance controllerAppearance = Appearance::disappeared;
    bool appearanceAnimated = false;
    Transition controllerTransition = Transition::none;
    // The end of the transition this controller's view is animating in or out.
    std::function<void()> transitionEnd;
};

} // namespace ui
