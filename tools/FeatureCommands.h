// The feature commands of the tool: the tree of a target's features, and
// reading and writing one of them.
#pragma once

#include <string>

#include "TavikC.h"

// Each takes the words after the command; the result is the exit code.
// TARGET is "system" or a camera (see OpenCamera).
// tavik features TARGET
int FeaturesCommand(int aCount, char** aWords);
// tavik get TARGET NAME
int GetCommand(int aCount, char** aWords);
// tavik set TARGET NAME [VALUE] (a command runs without a value)
int SetCommand(int aCount, char** aWords);

// A feature's current value as text; a status when it cannot be read.
TvkError_t FeatureValueText(TvkHandle_t aHandle, const TvkFeatureInfo_t& aInfo, std::string& aText);

// The system's features, one read and one write, for the demo.
int FeatureDemo();
