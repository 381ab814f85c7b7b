#pragma once

#include "reference_host/gmsh/GmshBlocks.h"
#include "reference_host/gmsh/GmshContent.h"
#include "reference_host/gmsh/GmshCursor.h"

namespace reference_host {

/// Reads a Gmsh file from its beginning to its end.
/// @param[out] blocks  null: the nodes and elements go into the content; else see GmshSections
/// @throws MeshError  what ReadGmsh says of the format, and of damaged files
void ReadGmshContent(GmshCursor& cursor, GmshContent& content, GmshBlocks* blocks = nullptr);

}  // namespace reference_host
