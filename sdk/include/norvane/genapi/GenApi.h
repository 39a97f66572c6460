#pragma once

#include "norvane/genapi/Callback.h"
#include "norvane/genapi/Enums.h"
#include "norvane/genapi/GCString.h"
#include "norvane/genapi/INode.h"
#include "norvane/genapi/INodeMap.h"
#include "norvane/genapi/Pointer.h"
