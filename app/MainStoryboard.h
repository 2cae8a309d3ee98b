#pragma once

// The scenes of the storyboard "Main": every screen by the identifier the app asks for.
class MainStoryboard {
public:
    // Safe to call more than once; a later call registers the same factories again.
    static void registerScenes();
};
