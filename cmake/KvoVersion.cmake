# The version of everything in this tree. Included before project(), also by the host where it builds alone.
set(KVO_VERSION 0.1.0)
