#pragma once

/// Everything of the camera library but the video writer.
#include "norvane/Camera.h"
#include "norvane/Exception.h"
#include "norvane/Image.h"
#include "norvane/Interface.h"
#include "norvane/Log.h"
#include "norvane/System.h"
#include "norvane/genapi/GenApi.h"
