#include <memory>

#include <gtest/gtest.h>

#include "platform/ui/Storyboard.h"
#include "platform/ui/ViewController.h"

namespace ui::test {
namespace {

class SceneController : public ViewController {
    Q_OBJECT
};

TEST(StoryboardTest, InstantiatesTheLatestFactoryOfItsOwnStoryboard) {
    Storyboard::registerFactory("StoryboardTest", "SceneController",
                                [] { return new SceneController; });
    const Storyboard storyboard("StoryboardTest");
    const Storyboard other("StoryboardTestOther");

    EXPECT_TRUE(storyboard.contains("SceneController"));
    EXPECT_FALSE(other.contains("SceneController"));
    EXPECT_EQ(other.instantiate("SceneController"), nullptr);
    EXPECT_EQ(storyboard.instantiate("Missing"), nullptr);

    std::unique_ptr<ViewController> first(storyboard.instantiate("SceneController"));
    std::unique_ptr<ViewController> second(storyboard.instantiate("SceneController"));
    ASSERT_TRUE(qobject_cast<SceneController*>(first.get()));
    EXPECT_NE(first, second);
    EXPECT_EQ(first->objectName(), "SceneController");

    Storyboard::registerFactory("StoryboardTest", "SceneController",
                                [] { return new ViewController; });
    // The later factory wins; asked by type, its controller of another class is no answer.
    std::unique_ptr<ViewController> replaced(storyboard.instantiate("SceneController"));
    ASSERT_TRUE(replaced);
    EXPECT_FALSE(qobject_cast<SceneController*>(replaced.get()));
    EXPECT_EQ(storyboard.instantiate<SceneController>(), nullptr);
    Storyboard::registerFactory("StoryboardTest", "SceneController",
                                [] { return new SceneController; });
    std::unique_ptr<SceneController> typed(storyboard.instantiate<SceneController>());
    EXPECT_TRUE(typed);
}

} // namespace
} // namespace ui::test

#include "StoryboardTest.moc"
