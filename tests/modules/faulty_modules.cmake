# Modules with a fault each, for the conformance run to find.
