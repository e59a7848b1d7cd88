# Modules that show what a host does.
