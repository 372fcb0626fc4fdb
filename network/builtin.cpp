// The built-in table travels as a Qt resource (":/tables/SydneyTrains.vq").
// This file only gives the resource library a translation unit of its own.
namespace quendle { int builtinTableMarker = 0; }
