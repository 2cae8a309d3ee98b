#pragma once

#include <QImage>
#include <QUrl>

#include <optional>

namespace av {

// Pictures and the length of a movie file, for thumbnails and contact sheets. Decodes on the
// calling thread; each call blocks until its frame is there (a few tens of milliseconds).
class AssetImageGenerator {
public:
    explicit AssetImageGenerator(QUrl url);

    // The movie's length in seconds; nullopt when the file cannot be read.
    std::optional<double> duration() const;
    // The frame shown at the time (clamped to the movie), at most maximumWidth wide with the
    // picture's shape and the movie's rotation applied; a null image when the file cannot be read.
    QImage imageAt(double seconds, int maximumWidth = 640) const;

private:
    QUrl asset;
};

} // namespace av
