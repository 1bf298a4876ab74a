// The discovery commands of the tool: interfaces and cameras as a table, one
// camera's description, and finding the camera a word names.
#pragma once

#include "TavikC.h"

// Each takes the words after the command; the result is the exit code.
// tavik list
int ListCommand(int aCount, char** aWords);
// tavik info CAMERA
int InfoCommand(int aCount, char** aWords);

// With the library started: opens the camera a word names, by its
// identifier, its serial number or its place in `tavik list`. False, with
// the reason on standard error, when none is found or it does not open.
bool OpenCamera(const char* aWord, TvkHandle_t& aCamera);

// The cameras, and a few features of the first, for the demo.
int CameraDemo();
