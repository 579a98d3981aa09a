#pragma once

#include <support/testdesign.h>

/// From a core description to samples: the program's own loader, image, link and cutting against a
/// simulated board that shares no code with them, through a real server process and socket. Every
/// signal and sample of every window is compared with the design's formula.
void compareWithStimulus(const TestDesign &design);
