// The first-run tutorial with its four installed clips playing at once, in a phone-sized window
// offscreen, one page showing:
// - the pictures shown per second on the page in view (the clips are 30 frames a second);
// - the GUI thread's time per shown picture (thread CPU time: the four players' notices, the
//   page's painting and the pager), the figure that must stay under 2 ms;
// - the same while the pager glides from page to page.
#include "bench/EventLoopTiming.h"
#include "onboarding/TutorialViewController.h"
#include "platform/av/Gst.h"
#include "platform/av/PlayerLayer.h"
#include "platform/ui/ScrollView.h"
#include "platform/ui/Window.h"
#include "playback/VideoContainerView.h"

#include <QApplication>
#include <QKeyEvent>

#include <cstdio>

namespace {

constexpr QSize phone(390, 844);
constexpr int measuredMilliseconds = 6000;

av::PlayerLayer* layerOfPage(TutorialViewController* tutorial, int page) {
    const QList<VideoContainerView*> pages =
        tutorial->scrollView->contentView()->findChildren<VideoContainerView*>();
    return page < pages.size() ? pages.at(page)->playerLayer() : nullptr;
}

} // namespace

int main(int argc, char** argv) {
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    av::Gst::ensureInitialized();

    ui::Window window;
    auto* tutorial = new TutorialViewController;
    window.setRootViewController(tutorial);
    window.resize(phone);
    window.show();
    if (!waitFor([&] { return tutorial->players().size() == 4; }, 5000)) {
        std::fprintf(stderr, "The tutorial's clips are missing (see resources/data)\n");
        return 1;
    }
    av::PlayerLayer* first = layerOfPage(tutorial, 0);
    waitFor([&] { return first->framesDisplayed() > 10; }, 10000);

    double cpu = threadCpuMilliseconds();
    quint64 shown = first->framesDisplayed();
    waitFor([] { return false; }, measuredMilliseconds);
    cpu = threadCpuMilliseconds() - cpu;
    shown = first->framesDisplayed() - shown;
    std::printf("tutorial_pictures_per_second %.1f fps\n",
                double(shown) * 1000.0 / measuredMilliseconds);
    std::printf("tutorial_gui_thread_cpu_per_frame %.3f ms\n",
                cpu / double(std::max<quint64>(1, shown)));

    // Three glides to the last page and three back, counting the pictures of every page.
    auto allShown = [&] {
        quint64 total = 0;
        for (int page = 0; page < 4; ++page)
            total += layerOfPage(tutorial, page)->framesDisplayed();
        return total;
    };
    cpu = threadCpuMilliseconds();
    shown = allShown();
    for (Qt::Key key :
         {Qt::Key_Right, Qt::Key_Right, Qt::Key_Right, Qt::Key_Left, Qt::Key_Left, Qt::Key_Left}) {
        QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier);
        QApplication::sendEvent(tutorial->scrollView, &press);
        waitFor([&] { return !tutorial->scrollView->isDecelerating(); }, 2000, 5);
    }
    cpu = threadCpuMilliseconds() - cpu;
    shown = allShown() - shown;
    std::printf("tutorial_glide_gui_thread_cpu_per_frame %.3f ms\n",
                cpu / double(std::max<quint64>(1, shown)));
    std::fflush(stdout);
    return 0;
}
