// The one file of the libraries that hold precompiled headers.
