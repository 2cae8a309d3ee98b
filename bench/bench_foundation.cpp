#include "LineReporter.h"

#include "platform/foundation/PreferenceSchema.h"
#include "platform/foundation/Preferences.h"

#include <QCoreApplication>
#include <QTemporaryDir>

// Every preference change rewrites the file atomically; this is what one change costs.
static void preferencesAtomicWrite(benchmark::State& state) {
    QTemporaryDir dir;
    foundation::Preferences preferences(dir.filePath(QStringLiteral("preferences.json")));
    preferences.setInteger(foundation::PreferenceSchema::zoomMode, 1);
    preferences.setInteger(foundation::PreferenceSchema::videoMode, 2);
    preferences.setBool(foundation::PreferenceSchema::tutorialShowed, true);
    float seconds = 1.0f;
    for (auto _ : state) {
        preferences.setFloat(foundation::PreferenceSchema::zoomDuration, seconds);
        seconds = seconds >= 15.0f ? 1.0f : seconds + 1.0f;
    }
}
BENCHMARK(preferencesAtomicWrite)->Unit(benchmark::kMicrosecond);

int main(int argc, char** argv) {
    QCoreApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    LineReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}
