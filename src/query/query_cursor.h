// The reference-table cursors of SECMOLRA_BeginQuery.
#pragma once

namespace molra::query {

// SECMOLRA_Exit: drops every open cursor without calling the transport.
void AbandonCursors();

}  // namespace molra::query
