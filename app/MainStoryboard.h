#pragma once

// The scenes of the storyboard "Main": every screen by the identifier the app asks for.
class MainStoryboard {
public:
    // Called once by main(), before any screen is made.
    static void registerScenes();
};
