// A library with nothing in it, for the least that loading one costs.
