// Renderers that draw on the processor.
#pragma once

#include <cstring>

// `name` is what OpenGL says as GL_RENDERER.
inline bool isSoftwareRenderer(const char* name)
{
    for (const char* part : {"llvmpipe", "softpipe", "swrast", "SwiftShader"}) {
        if (std::strstr(name, part))
            return true;
    }
    return false;
}
