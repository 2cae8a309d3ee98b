#include "platform/av/faces/FaceCascade.h"

#include <opencv2/imgproc.hpp>
#include <opencv2/objdetect.hpp>

#include <algorithm>
#include <memory>
#include <vector>

extern "C" {

void* tessaroFacesLoad(const char* modelPath) {
    try {
        auto cascade = std::make_unique<cv::CascadeClassifier>();
        if (modelPath && cascade->load(modelPath))
            return cascade.release();
    } catch (const cv::Exception&) {
    }
    return nullptr;
}

int tessaroFacesDetect(void* cascade, const unsigned char* grey, int width, int height, int stride,
                       int detectionWidth, double* boxes, int maxFaces) {
    if (!cascade || !grey || width <= 0 || height <= 0)
        return 0;
    try {
        const cv::Mat picture(height, width, CV_8UC1, const_cast<unsigned char*>(grey),
                              size_t(stride));
        // Scaled by area, so that no edge aliases away.
        cv::Mat small;
        if (width > detectionWidth)
            cv::resize(picture, small,
                       cv::Size(detectionWidth, std::max(1, height * detectionWidth / width)), 0, 0,
                       cv::INTER_AREA);
        else
            small = picture;
        cv::Mat equalized;
        cv::equalizeHist(small, equalized);
        std::vector<cv::Rect> faces;
        static_cast<cv::CascadeClassifier*>(cascade)->detectMultiScale(equalized, faces, 1.1, 4, 0,
                                                                       cv::Size(24, 24));
        const int count = std::min(int(faces.size()), maxFaces);
        for (int i = 0; i < count; ++i) {
            boxes[4 * i] = double(faces[i].x) / small.cols;
            boxes[4 * i + 1] = double(faces[i].y) / small.rows;
            boxes[4 * i + 2] = double(faces[i].width) / small.cols;
            boxes[4 * i + 3] = double(faces[i].height) / small.rows;
        }
        return count;
    } catch (const cv::Exception&) {
        return 0;
    }
}

void tessaroFacesFree(void* cascade) {
    delete static_cast<cv::CascadeClassifier*>(cascade);
}
}
