#pragma once

// The face detector's plug-in: OpenCV and the libraries it brings (a dozen megabytes resident)
// are loaded only by a program that looks for faces, never by the recording screen. Plain C
// functions, so the loader needs no OpenCV header and no C++ ABI across the boundary.

extern "C" {

// A cascade read from this model file; null when it cannot be read.
void* tessaroFacesLoad(const char* modelPath);
// Finds faces in a grey picture, looked at scaled to detectionWidth pixels wide. Writes up to
// maxFaces boxes as x, y, width, height in fractions of the picture and returns how many it
// found (at most maxFaces).
int tessaroFacesDetect(void* cascade, const unsigned char* grey, int width, int height, int stride,
                       int detectionWidth, double* boxes, int maxFaces);
void tessaroFacesFree(void* cascade);
}
