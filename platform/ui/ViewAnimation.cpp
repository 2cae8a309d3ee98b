#include "platform/ui/ViewAnimation.h"

#include <memory>
#include <vector>

#include <QCoreApplication>
#include <QGraphicsOpacityEffect>
#include <QHash>
#include <QPointer>
#include <QPropertyAnimation>
#include <QSequentialAnimationGroup>
#include <QTimer>
#include <QWidget>

namespace ui {
namespace {

// Below this the platform treats a view as hidden for hit-testing.
constexpr qreal hiddenAlpha = 0.01;
// Marks WA_TransparentForMouseEvents as set by us, so a widget's own setting is never undone.
constexpr const char* inputOffProperty = "_ui_alphaInputOff";

struct Block {
    std::function<void(bool)> completion;
    int running = 0;
    bool finished = true;
};

struct Running {
    QAbstractAnimation* animation = nullptr;
    std::shared_ptr<Block> block;
    qreal target = 1.0;
    bool blocksInput = false;
};

QHash<const QWidget*, Running>& runningAnimations() {
    static QHash<const QWidget*, Running> running;
    return running;
}

struct Collected {
    QPointer<QWidget> widget;
    qreal alpha;
};
// The setAlpha calls of the animate() block being run, or null outside one.
std::vector<Collected>* collecting = nullptr;

QString describe(const QWidget* widget) {
    return QStringLiteral("%1 \"%2\"")
        .arg(QString::fromLatin1(widget->metaObject()->className()), widget->objectName());
}

void updateInput(QWidget* widget) {
    const auto running = runningAnimations().constFind(widget);
    const bool blocked = ViewAnimation::alpha(widget) < hiddenAlpha ||
                         (running != runningAnimations().constEnd() && running->blocksInput);
    const bool ours = widget->property(inputOffProperty).toBool();
    if (blocked && !ours && !widget->testAttribute(Qt::WA_TransparentForMouseEvents)) {
        widget->setAttribute(Qt::WA_TransparentForMouseEvents, true);
        widget->setProperty(inputOffProperty, true);
    } else if (!blocked && ours) {
        widget->setAttribute(Qt::WA_TransparentForMouseEvents, false);
        widget->setProperty(inputOffProperty, false);
    }
}

QGraphicsOpacityEffect* opacityEffect(QWidget* widget, bool create) {
    QGraphicsEffect* effect = widget->graphicsEffect();
    if (auto* opacity = qobject_cast<QGraphicsOpacityEffect*>(effect))
        return opacity;
    if (effect)
        qFatal("ui::ViewAnimation: %s has a graphics effect that is not an opacity effect",
               qPrintable(describe(widget)));
    if (!create)
        return nullptr;
    auto* opacity = new QGraphicsOpacityEffect(widget);
    opacity->setOpacity(1.0);
    QObject::connect(opacity, &QGraphicsOpacityEffect::opacityChanged, widget,
                     [widget] { updateInput(widget); });
    widget->setGraphicsEffect(opacity);
    return opacity;
}

void showAlpha(QWidget* widget, qreal alpha) {
    if (alpha >= 1.0 && !runningAnimations().contains(widget)) {
        // An effect renders the widget offscreen; drop it once it has nothing to do.
        if (qobject_cast<QGraphicsOpacityEffect*>(widget->graphicsEffect()))
            widget->setGraphicsEffect(nullptr);
    } else {
        opacityEffect(widget, true)->setOpacity(alpha);
    }
    updateInput(widget);
}

// widget is only a key when the widget is being destroyed.
void endAnimation(QWidget* widget, bool finished, bool widgetAlive) {
    const auto it = runningAnimations().find(widget);
    if (it == runningAnimations().end())
        return;
    const Running running = *it;
    runningAnimations().erase(it);
    running.animation->disconnect();
    if (widgetAlive)
        QObject::disconnect(widget, nullptr, running.animation, nullptr);
    running.animation->stop();
    running.animation->deleteLater();
    if (widgetAlive) {
        if (finished)
            showAlpha(widget, running.target);
        else
            showAlpha(widget, ViewAnimation::alpha(widget));
    }
    Block& block = *running.block;
    block.finished = block.finished && finished;
    if (--block.running == 0 && block.completion) {
        const auto completion = std::move(block.completion);
        completion(block.finished);
    }
}

QEasingCurve curveFor(ViewAnimation::AnimationOptions options) {
    QEasingCurve curve(QEasingCurve::BezierSpline);
    switch (options & (3u << 16)) {
    case ViewAnimation::curveLinear:
        return QEasingCurve(QEasingCurve::Linear);
    case ViewAnimation::curveEaseIn:
        curve.addCubicBezierSegment({0.42, 0.0}, {1.0, 1.0}, {1.0, 1.0});
        break;
    case ViewAnimation::curveEaseOut:
        curve.addCubicBezierSegment({0.0, 0.0}, {0.58, 1.0}, {1.0, 1.0});
        break;
    default:
        curve.addCubicBezierSegment({0.42, 0.0}, {0.58, 1.0}, {1.0, 1.0});
        break;
    }
    return curve;
}

int milliseconds(double seconds) {
    return seconds > 0 ? qRound(seconds * 1000.0) : 0;
}

void startAnimation(QWidget* widget, qreal target, double duration, double delay,
                    ViewAnimation::AnimationOptions options, const std::shared_ptr<Block>& block) {
    endAnimation(widget, false, true);
    QGraphicsOpacityEffect* effect = opacityEffect(widget, true);
    const qreal from = effect->opacity();

    auto leg = [&](qreal start, qreal end) {
        auto* animation = new QPropertyAnimation(effect, "opacity");
        animation->setDuration(milliseconds(duration));
        animation->setStartValue(start);
        animation->setEndValue(end);
        animation->setEasingCurve(curveFor(options));
        return animation;
    };
    QAbstractAnimation* animation = leg(from, target);
    if (options & (ViewAnimation::autoreverse | ViewAnimation::repeat)) {
        auto* cycle = new QSequentialAnimationGroup;
        cycle->addAnimation(animation);
        if (options & ViewAnimation::autoreverse)
            cycle->addAnimation(leg(target, from));
        if (options & ViewAnimation::repeat)
            cycle->setLoopCount(-1);
        animation = cycle;
    }
    if (delay > 0) {
        auto* delayed = new QSequentialAnimationGroup;
        delayed->addPause(milliseconds(delay));
        delayed->addAnimation(animation);
        animation = delayed;
    }

    runningAnimations().insert(
        widget, {animation, block, target, !(options & ViewAnimation::allowUserInteraction)});
    ++block->running;
    QObject::connect(animation, &QAbstractAnimation::finished, animation,
                     [widget] { endAnimation(widget, true, true); });
    QObject::connect(widget, &QObject::destroyed, animation,
                     [widget] { endAnimation(widget, false, false); });
    updateInput(widget);
    animation->start();
}

} // namespace

void ViewAnimation::setAlpha(QWidget* widget, qreal alpha) {
    if (!widget)
        qFatal("ui::ViewAnimation::setAlpha: null widget");
    alpha = qBound(0.0, alpha, 1.0);
    if (collecting) {
        collecting->push_back({widget, alpha});
        return;
    }
    endAnimation(widget, false, true);
    showAlpha(widget, alpha);
}

qreal ViewAnimation::alpha(const QWidget* widget) {
    if (!widget)
        qFatal("ui::ViewAnimation::alpha: null widget");
    const auto* effect = qobject_cast<const QGraphicsOpacityEffect*>(widget->graphicsEffect());
    return effect ? effect->opacity() : 1.0;
}

void ViewAnimation::animate(double duration, double delay, AnimationOptions options,
                            std::function<void()> animations,
                            std::function<void(bool finished)> completion) {
    if (!animations)
        qFatal("ui::ViewAnimation::animate: no animations block");

    std::vector<Collected> collected;
    {
        struct Restore {
            std::vector<Collected>* outer;
            ~Restore() { collecting = outer; }
        } restore{collecting};
        collecting = &collected;
        animations();
    }

    auto block = std::make_shared<Block>();
    block->completion = std::move(completion);
    const bool immediate = duration <= 0 && delay <= 0;
    for (std::size_t i = 0; i < collected.size(); ++i) {
        QWidget* widget = collected[i].widget;
        if (!widget)
            continue;
        // The last value set for a widget in the block wins.
        bool overridden = false;
        for (std::size_t later = i + 1; later < collected.size() && !overridden; ++later)
            overridden = collected[later].widget == widget;
        if (overridden)
            continue;
        if (immediate) {
            endAnimation(widget, false, true);
            showAlpha(widget, collected[i].alpha);
        } else {
            startAnimation(widget, collected[i].alpha, duration, delay, options, block);
        }
    }
    if (block->running == 0 && block->completion) {
        QTimer::singleShot(0, QCoreApplication::instance(), [block] {
            const auto completion = std::move(block->completion);
            completion(true);
        });
    }
}

void ViewAnimation::animate(double duration, std::function<void()> animations,
                            std::function<void(bool finished)> completion) {
    animate(duration, 0.0, curveEaseInOut, std::move(animations), std::move(completion));
}

void ViewAnimation::removeAllAnimations(QWidget* widget) {
    if (!widget)
        qFatal("ui::ViewAnimation::removeAllAnimations: null widget");
    endAnimation(widget, false, true);
}

bool ViewAnimation::isAnimating(const QWidget* widget) {
    return runningAnimations().contains(widget);
}

} // namespace ui
