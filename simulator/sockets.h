// The server's TCP connections by their ports: the HTTP library hands out no socket, yet a fault must be able to cut
// a connection and a stop must not wait for idle ones.
#pragma once

namespace sim {

/// Closes the accepted connection between these two loopback ports at once; the peer sees its end.
void cutConnection(int localPort, int remotePort);

/// Lets no more requests arrive on the accepted connections of this port; answers under way still leave.
void stopReading(int localPort);

} // namespace sim
