// The shared library is assembled from the layer archives; this translation
// unit only gives the target a source of its own.
