// SPDX-License-Identifier: MIT
#pragma once

#include "Album.h"
#include "Page.h"
#include "Scene.h"

/// The steps of the demo. Each is one file: it takes the scene through one part of the library,
/// saves its pictures in the album and returns its section of the page. main.cpp lists them.
namespace Demo {

Section ShowScene(const Scene& scene, Album& album);
Section ShowDemosaicing(const Scene& scene, Album& album);
Section ShowPacked(const Scene& scene, Album& album);
Section ShowYCbCr(const Scene& scene, Album& album);
Section ShowColorMaps(const Scene& scene, Album& album);
Section ShowOrientations(const Scene& scene, Album& album);
Section ShowPolarization(const Scene& scene, Album& album);
Section ShowGamma(const Scene& scene, Album& album);
Section ShowBalance(const Scene& scene, Album& album);
Section ShowFlatField(const Scene& scene, Album& album);
Section ShowDarkFrame(const Scene& scene, Album& album);
Section ShowMedian(const Scene& scene, Album& album);
Section ShowColorTransformation(const Scene& scene, Album& album);
Section ShowEdgeEnhancement(const Scene& scene, Album& album);
Section ShowChromaSuppression(const Scene& scene, Album& album);
Section ShowAveraging(const Scene& scene, Album& album);
Section ShowGraphs(const Scene& scene, Album& album);
Section ShowNoise(const Scene& scene, Album& album);
Section ShowFiles(const Scene& scene, Album& album);
Section ShowVideo(const Scene& scene, Album& album);

}  // namespace Demo
