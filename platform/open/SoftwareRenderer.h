// Renderers that draw on the processor.
#pragma once

#include <algorithm>
#include <cstring>
#include <initializer_list>

// `name` is what OpenGL says as GL_RENDERER.
inline bool isSoftwareRenderer(const char* name)
{
    const std::initializer_list<const char*> parts = {"llvmpipe", "softpipe", "swrast",
                                                      "SwiftShader"};
    return std::any_of(parts.begin(), parts.end(),
                       [name](const char* part) { return std::strstr(name, part) != nullptr; });
}
