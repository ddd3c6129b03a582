/* Makes the files of this directory with the Exodus library itself (libexodusii-dev), and says what the library makes
 * of their side sets:
 *
 *   cc make_files.c -lexoIIv2c -o make_files && ./make_files
 *
 * sides.e has one element of each type, and a side set for each of its sides; sides.txt has the nodes of each, by
 * ex_get_side_set_node_list() (no SHELL9, of which it lists the corners alone). plane.e is the same in two dimensions.
 * results.e and results4.e have a truth table, maps, names and variables of every kind; their values are 1000 variable
 * + 100 entity + 10 step + place, from 1. */
#include <exodusII.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

struct Type {
  const char* name;
  int nodes;
  int sides;
};

static const struct Type solids[] = {{"HEX", 8, 6},        {"HEX20", 20, 6}, {"HEX27", 27, 6},   {"TETRA", 4, 4},
                                     {"TET10", 10, 4},     {"WEDGE", 6, 5},  {"WEDGE15", 15, 5}, {"PYRAMID5", 5, 5},
                                     {"PYRAMID13", 13, 5}, {"SHELL", 4, 6},  {"SHELL8", 8, 6},   {"TRI3", 3, 5},
                                     {"TRI6", 6, 5},       {"TRUSS", 2, 1},  {"BEAM3", 3, 1}};
static const struct Type flats[] = {{"QUAD", 4, 4}, {"QUAD8", 8, 4}, {"QUAD9", 9, 4}, {"TRI", 3, 3}, {"TRI6", 6, 3}};

static void check(int status, const char* what) {
  if (status < 0) {
    fprintf(stderr, "%s: %d\n", what, status);
    exit(1);
  }
}

static void writeSides(const char* path, const char* listPath, int dimensions, const struct Type* types, int count) {
  int real = 8, stored = 8, nodes = 0, sides = 0, node = 1, side = 1;
  int id = ex_create(path, EX_CLOBBER | EX_LARGE_MODEL, &real, &stored);
  FILE* list = fopen(listPath, "w");
  check(id, path);
  for (int i = 0; i < count; ++i) {
    nodes += types[i].nodes;
    sides += types[i].sides;
  }
  check(ex_put_init(id, "one element of each type", dimensions, nodes, count, count, 0, sides), "init");
  double* along = calloc((size_t)nodes, sizeof(double));
  for (int i = 0; i < nodes; ++i) along[i] = i;
  check(ex_put_coord(id, along, along, dimensions == 3 ? along : NULL), "coordinates");
  for (int i = 0; i < count; ++i) {
    int connect[27];
    for (int n = 0; n < types[i].nodes; ++n) connect[n] = node++;
    check(ex_put_block(id, EX_ELEM_BLOCK, i + 1, types[i].name, 1, types[i].nodes, 0, 0, 0), "block");
    check(ex_put_conn(id, EX_ELEM_BLOCK, i + 1, connect, NULL, NULL), "connectivity");
    for (int s = 1; s <= types[i].sides; ++s, ++side) {
      int element = i + 1;
      check(ex_put_set_param(id, EX_SIDE_SET, side, 1, 0), "set");
      check(ex_put_set(id, EX_SIDE_SET, side, &element, &s), "set");
    }
  }
  for (int s = 1; s < side; ++s) {
    int counts[1], found[27] = {0};
    check(ex_get_side_set_node_list(id, s, counts, found), "nodes of sides");
    fprintf(list, "sideset_%d", s);
    /* It counts more nodes than it lists for triangles of quadratic wedges and pyramids. */
    for (int n = 0; n < counts[0] && found[n] != 0; ++n) fprintf(list, " %d", found[n]);
    fprintf(list, "\n");
  }
  fclose(list);
  free(along);
  check(ex_close(id), "close");
}

static void put(int id, int step, ex_entity_type of, int variables, int entity, int number, int count) {
  double values[32];
  for (int v = 1; v <= variables; ++v) {
    for (int i = 0; i < count; ++i) values[i] = 1000 * v + 100 * entity + 10 * step + i + 1;
    check(ex_put_var(id, step, of, v, number, count, values), "values");
  }
}

static void names(int id, ex_entity_type of, int count, char** texts) {
  check(ex_put_variable_param(id, of, count), "variables");
  check(ex_put_variable_names(id, of, count, texts), "names");
}

static void writeResults(const char* path, int mode) {
  int real = 8, stored = mode & EX_NETCDF4 ? 8 : 4;
  int id = ex_create(path, EX_CLOBBER | mode, &real, &stored);
  check(id, path);
  ex_set_max_name_length(id, 80);
  check(ex_put_init(id, "results of every kind", 3, 12, 2, 2, 1, 1), "init");
  double x[12], y[12], z[12];
  for (int i = 0; i < 12; ++i) {
    x[i] = i / 4;
    y[i] = i % 4 / 2;
    z[i] = i % 2;
  }
  check(ex_put_coord(id, x, y, z), "coordinates");
  int first[] = {1, 5, 7, 3, 2, 6, 8, 4}, second[] = {5, 9, 11, 7, 6, 10, 12, 8};
  check(ex_put_block(id, EX_ELEM_BLOCK, 100, "HEX8", 1, 8, 0, 0, 1), "block");
  check(ex_put_block(id, EX_ELEM_BLOCK, 200, "HEX8", 1, 8, 0, 0, 0), "block");
  check(ex_put_conn(id, EX_ELEM_BLOCK, 100, first, NULL, NULL), "connectivity");
  check(ex_put_conn(id, EX_ELEM_BLOCK, 200, second, NULL, NULL), "connectivity");
  double attribute = 0.5;
  check(ex_put_attr(id, EX_ELEM_BLOCK, 100, &attribute), "attribute");
  check(ex_put_name(id, EX_ELEM_BLOCK, 100, "a block with a name that is longer than thirty-two characters"), "name");
  int nodeMap[12], elementMap[] = {31, 17};
  for (int i = 0; i < 12; ++i) nodeMap[i] = 100 - 3 * i;
  check(ex_put_id_map(id, EX_NODE_MAP, nodeMap), "map");
  check(ex_put_id_map(id, EX_ELEM_MAP, elementMap), "map");
  int members[] = {1, 2, 3, 4}, elements[] = {1, 2, 2}, sides[] = {4, 2, 1};
  check(ex_put_set_param(id, EX_NODE_SET, 7, 4, 0), "set");
  check(ex_put_set(id, EX_NODE_SET, 7, members, NULL), "set");
  check(ex_put_set_param(id, EX_SIDE_SET, 8, 3, 0), "set");
  check(ex_put_set(id, EX_SIDE_SET, 8, elements, sides), "set");
  check(ex_put_name(id, EX_NODE_SET, 7, "fixed"), "name");
  check(ex_put_name(id, EX_SIDE_SET, 8, "fixed"), "name");
  char* nodal[] = {"DISPLX", "DISPLY", "DISPLZ", "temperature"};
  char* element[] = {"SXX", "SYY", "SZZ", "SXY", "SYZ", "SZX", "damage"};
  char* global[] = {"kinetic_energy", "time_step_size"};
  char* ofSet[] = {"reaction"};
  char* ofSide[] = {"pressure"};
  names(id, EX_NODAL, 4, nodal);
  names(id, EX_ELEM_BLOCK, 7, element);
  names(id, EX_GLOBAL, 2, global);
  names(id, EX_NODE_SET, 1, ofSet);
  names(id, EX_SIDE_SET, 1, ofSide);
  int table[14];
  for (int i = 0; i < 14; ++i) table[i] = 1;
  table[13] = 0; /* the second block has no damage */
  check(ex_put_truth_table(id, EX_ELEM_BLOCK, 2, 7, table), "truth table");
  for (int step = 1; step <= 3; ++step) {
    double time = 0.5 * step, globals[] = {1000 + 10 * step, 2000 + 10 * step};
    check(ex_put_time(id, step, &time), "time");
    put(id, step, EX_NODAL, 4, 1, 1, 12);
    put(id, step, EX_ELEM_BLOCK, 7, 1, 100, 1);
    put(id, step, EX_ELEM_BLOCK, 6, 2, 200, 1);
    put(id, step, EX_NODE_SET, 1, 1, 7, 4);
    put(id, step, EX_SIDE_SET, 1, 1, 8, 3);
    check(ex_put_var(id, step, EX_GLOBAL, 1, 0, 2, globals), "globals");
  }
  check(ex_close(id), "close");
}

int main(void) {
  writeSides("sides.e", "sides.txt", 3, solids, sizeof(solids) / sizeof(*solids));
  writeSides("plane.e", "plane.txt", 2, flats, sizeof(flats) / sizeof(*flats));
  writeResults("results.e", EX_NORMAL_MODEL);
  writeResults("results4.e", EX_NETCDF4);
  return 0;
}
