#include "foundation/IBCnode.h"

// The header names the parameters after the members; here such names would hide the members.

IBCnode::IBCnode(double px, double py, double pz, int /*tag*/) : x(px), y(py), z(pz) {}

IBCnode::~IBCnode() = default;

IBCnode& IBCnode::operator=(IBCnode const& other) {
  x = other.x;
  y = other.y;
  z = other.z;
  return *this;
}

void IBCnode::copy(IBCnode& other) { SetData(other.x, other.y, other.z, other.tag); }

IBCnode& IBCnode::operator+(IBCnode const& other) {
  SetDataVector(other.x, other.y, other.z);
  return *this;
}

IBCnode& IBCnode::operator+=(IBCnode const& other) { return *this + other; }

IBCnode& IBCnode::operator-(IBCnode const& other) {
  x -= other.x;
  y -= other.y;
  z -= other.z;
  return *this;
}

void IBCnode::SetData(double px, double py, double pz, int newTag) {
  x = px;
  y = py;
  z = pz;
  tag = newTag;
}

void IBCnode::SetDataVector(double dx, double dy, double dz) {
  x += dx;
  y += dy;
  z += dz;
}

void IBCnode::Set_X(double px) { x = px; }
void IBCnode::Set_Y(double py) { y = py; }
void IBCnode::Set_Z(double pz) { z = pz; }
