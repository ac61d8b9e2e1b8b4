// A PipeWire card that exists only in this program: one profile, two input routes (the ports
// "analog-input-mic", Microphone, and "analog-input-linein", Line In) and a source "portmic" bound
// to it. Ports, volume and mute can be set as on a real card. Standard input takes
//   avail NAME yes|no|unknown     plugs or unplugs the jack of a port
//   quit                          unplugs the card
#include <pipewire/pipewire.h>
#include <signal.h>
#include <spa/monitor/device.h>
#include <spa/monitor/utils.h>
#include <spa/param/audio/raw.h>
#include <spa/param/param.h>
#include <spa/param/profile.h>
#include <spa/param/props.h>
#include <spa/param/route.h>
#include <spa/pod/builder.h>
#include <spa/pod/filter.h>
#include <spa/pod/parser.h>
#include <spa/utils/hook.h>
#include <spa/utils/keys.h>
#include <spa/utils/names.h>
#include <spa/utils/result.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#define ROUTE_COUNT 2

enum { PARAM_ENUM_PROFILE, PARAM_PROFILE, PARAM_ENUM_ROUTE, PARAM_ROUTE, PARAM_COUNT };

struct route {
  const char *name;
  const char *description;
  const char *type;
  int priority;
  enum spa_param_availability available;
};

struct card {
  struct spa_device device;
  struct spa_hook_list hooks;
  struct spa_param_info params[PARAM_COUNT];
  struct spa_device_info info;
  struct route routes[ROUTE_COUNT];
  uint32_t active;
  float volume;
  bool mute;
  struct pw_main_loop *loop;
  struct pw_core *core;
  struct pw_proxy *node;
};

static const struct spa_dict_item card_items[] = {{SPA_KEY_MEDIA_CLASS, "Audio/Device"},
                                                  {SPA_KEY_DEVICE_NAME, "test_card"},
                                                  {SPA_KEY_DEVICE_DESCRIPTION, "Test card"},
                                                  {SPA_KEY_DEVICE_API, "test"},
                                                  {"device.vendor.name", "Test vendor"}};
static const struct spa_dict card_properties = SPA_DICT_INIT_ARRAY(card_items);

static void emit_info(struct card *card, bool all) {
  card->info = SPA_DEVICE_INFO_INIT();
  card->info.change_mask = SPA_DEVICE_CHANGE_MASK_PARAMS;
  if (all)
    card->info.change_mask |= SPA_DEVICE_CHANGE_MASK_PROPS;
  card->info.props = &card_properties;
  card->info.params = card->params;
  card->info.n_params = PARAM_COUNT;
  spa_device_emit_info(&card->hooks, &card->info);
}

static void mark_changed(struct card *card, int param) {
  card->params[param].flags ^= SPA_PARAM_INFO_SERIAL;
}

static int add_listener(void *object, struct spa_hook *listener,
                        const struct spa_device_events *events, void *data) {
  struct card *card = object;
  struct spa_hook_list save;
  spa_hook_list_isolate(&card->hooks, &save, listener, events, data);
  emit_info(card, true);
  spa_hook_list_join(&card->hooks, &save);
  return 0;
}

static int sync_device(void *object, int seq) {
  struct card *card = object;
  spa_device_emit_result(&card->hooks, seq, 0, 0, NULL);
  return 0;
}

static struct spa_pod *build_profile(struct spa_pod_builder *b, uint32_t id) {
  struct spa_pod_frame object;
  struct spa_pod_frame classes;
  const uint32_t devices[1] = {0};
  spa_pod_builder_push_object(b, &object, SPA_TYPE_OBJECT_ParamProfile, id);
  spa_pod_builder_add(b, SPA_PARAM_PROFILE_index, SPA_POD_Int(0), SPA_PARAM_PROFILE_name,
                      SPA_POD_String("input:test"), SPA_PARAM_PROFILE_description,
                      SPA_POD_String("Test input"), SPA_PARAM_PROFILE_priority, SPA_POD_Int(100),
                      SPA_PARAM_PROFILE_available, SPA_POD_Id(SPA_PARAM_AVAILABILITY_yes), 0);
  spa_pod_builder_prop(b, SPA_PARAM_PROFILE_classes, 0);
  spa_pod_builder_push_struct(b, &classes);
  spa_pod_builder_int(b, 1);
  spa_pod_builder_add_struct(b, SPA_POD_String("Audio/Source"), SPA_POD_Int(1),
                             SPA_POD_String("card.profile.devices"),
                             SPA_POD_Array(sizeof(uint32_t), SPA_TYPE_Int, 1, devices));
  spa_pod_builder_pop(b, &classes);
  return spa_pod_builder_pop(b, &object);
}

static void build_route_state(struct card *card, struct spa_pod_builder *b, uint32_t id) {
  const uint32_t position[1] = {SPA_AUDIO_CHANNEL_MONO};
  spa_pod_builder_add(b, SPA_PARAM_ROUTE_device, SPA_POD_Int(0), SPA_PARAM_ROUTE_profile,
                      SPA_POD_Int(0), 0);
  spa_pod_builder_prop(b, SPA_PARAM_ROUTE_props, 0);
  spa_pod_builder_add_object(
      b, SPA_TYPE_OBJECT_Props, id, SPA_PROP_mute, SPA_POD_Bool(card->mute),
      SPA_PROP_channelVolumes, SPA_POD_Array(sizeof(float), SPA_TYPE_Float, 1, &card->volume),
      SPA_PROP_volumeBase, SPA_POD_Float(1.0f), SPA_PROP_volumeStep, SPA_POD_Float(1.0f / 65536),
      SPA_PROP_channelMap, SPA_POD_Array(sizeof(uint32_t), SPA_TYPE_Id, 1, position));
  spa_pod_builder_prop(b, SPA_PARAM_ROUTE_save, 0);
  spa_pod_builder_bool(b, false);
}

static struct spa_pod *build_route(struct card *card, struct spa_pod_builder *b, uint32_t id,
                                   uint32_t index) {
  const struct route *route = &card->routes[index];
  struct spa_pod_frame object;
  struct spa_pod_frame info;
  const uint32_t zero[1] = {0};
  spa_pod_builder_push_object(b, &object, SPA_TYPE_OBJECT_ParamRoute, id);
  spa_pod_builder_add(
      b, SPA_PARAM_ROUTE_index, SPA_POD_Int(index), SPA_PARAM_ROUTE_direction,
      SPA_POD_Id(SPA_DIRECTION_INPUT), SPA_PARAM_ROUTE_name, SPA_POD_String(route->name),
      SPA_PARAM_ROUTE_description, SPA_POD_String(route->description), SPA_PARAM_ROUTE_priority,
      SPA_POD_Int(route->priority), SPA_PARAM_ROUTE_available, SPA_POD_Id(route->available), 0);
  spa_pod_builder_prop(b, SPA_PARAM_ROUTE_info, 0);
  spa_pod_builder_push_struct(b, &info);
  spa_pod_builder_int(b, 1);
  spa_pod_builder_add(b, SPA_POD_String("port.type"), SPA_POD_String(route->type), NULL);
  spa_pod_builder_pop(b, &info);
  spa_pod_builder_add(
      b, SPA_PARAM_ROUTE_profiles, SPA_POD_Array(sizeof(uint32_t), SPA_TYPE_Int, 1, zero),
      SPA_PARAM_ROUTE_devices, SPA_POD_Array(sizeof(uint32_t), SPA_TYPE_Int, 1, zero), 0);
  if (id == SPA_PARAM_Route)
    build_route_state(card, b, id);
  return spa_pod_builder_pop(b, &object);
}

static int enum_params(void *object, int seq, uint32_t id, uint32_t start, uint32_t wanted,
                       const struct spa_pod *filter) {
  struct card *card = object;
  uint32_t count = 0;
  for (uint32_t index = start; count < wanted; ++index) {
    uint8_t buffer[4096];
    uint8_t filtered[4096];
    struct spa_pod_builder b = SPA_POD_BUILDER_INIT(buffer, sizeof buffer);
    struct spa_pod_builder f = SPA_POD_BUILDER_INIT(filtered, sizeof filtered);
    struct spa_pod *param = NULL;
    switch (id) {
      case SPA_PARAM_EnumProfile:
      case SPA_PARAM_Profile:
        if (index == 0)
          param = build_profile(&b, id);
        break;
      case SPA_PARAM_EnumRoute:
        if (index < ROUTE_COUNT)
          param = build_route(card, &b, id, index);
        break;
      case SPA_PARAM_Route:
        if (index == 0)
          param = build_route(card, &b, id, card->active);
        break;
      default:
        return -ENOENT;
    }
    if (param == NULL)
      return 0;
    struct spa_result_device_params result = {.id = id, .index = index, .next = index + 1};
    if (spa_pod_filter(&f, &result.param, param, filter) < 0)
      continue;
    spa_device_emit_result(&card->hooks, seq, 0, SPA_RESULT_TYPE_DEVICE_PARAMS, &result);
    ++count;
  }
  return 0;
}

static void take_properties(struct card *card, struct spa_pod *properties) {
  struct spa_pod_object *object = (struct spa_pod_object *)properties;
  struct spa_pod_prop *property;
  SPA_POD_OBJECT_FOREACH(object, property) {
    float volumes[64];
    if (property->key == SPA_PROP_mute)
      spa_pod_get_bool(&property->value, &card->mute);
    if (property->key == SPA_PROP_channelVolumes &&
        spa_pod_copy_array(&property->value, SPA_TYPE_Float, volumes, 64) > 0)
      card->volume = volumes[0];
  }
}

static int set_param(void *object, uint32_t id, uint32_t flags, const struct spa_pod *param) {
  struct card *card = object;
  (void)flags;
  if (id != SPA_PARAM_Route || param == NULL)
    return 0;
  int index = -1;
  const char *name = NULL;
  struct spa_pod *properties = NULL;
  spa_pod_parse_object(param, SPA_TYPE_OBJECT_ParamRoute, NULL, SPA_PARAM_ROUTE_index,
                       SPA_POD_OPT_Int(&index), SPA_PARAM_ROUTE_name, SPA_POD_OPT_String(&name),
                       SPA_PARAM_ROUTE_props, SPA_POD_OPT_Pod(&properties));
  for (int i = 0; name != NULL && i < ROUTE_COUNT; ++i) {
    if (strcmp(name, card->routes[i].name) == 0)
      index = i;
  }
  if (index < 0 || index >= ROUTE_COUNT)
    return -EINVAL;
  card->active = (uint32_t)index;
  if (properties != NULL)
    take_properties(card, properties);
  mark_changed(card, PARAM_ROUTE);
  emit_info(card, false);
  return 0;
}

static const struct spa_device_methods methods = {
    SPA_VERSION_DEVICE_METHODS, .add_listener = add_listener, .sync = sync_device,
    .enum_params = enum_params, .set_param = set_param};

// The source needs the card's number, so it is made once the card has one.
static void card_bound(void *data, uint32_t id) {
  struct card *card = data;
  if (card->node != NULL)
    return;
  char number[16];
  snprintf(number, sizeof number, "%u", id);
  struct pw_properties *properties = pw_properties_new(
      "factory.name", "support.null-audio-sink", "media.class", "Audio/Source/Virtual", "node.name",
      "portmic", "node.description", "Port mic", "audio.position", "MONO", "audio.rate", "48000",
      "device.id", number, "card.profile.device", "0", "device.api", "test", "object.linger",
      "false", "monitor.channel-volumes", "true", NULL);
  card->node = pw_core_create_object(card->core, "adapter", PW_TYPE_INTERFACE_Node, PW_VERSION_NODE,
                                     &properties->dict, 0);
  pw_properties_free(properties);
}

static const struct pw_proxy_events proxy_events = {PW_VERSION_PROXY_EVENTS, .bound = card_bound};

static void line_read(void *data, int fd, uint32_t mask) {
  struct card *card = data;
  (void)mask;
  char line[256];
  const ssize_t length = read(fd, line, sizeof line - 1);
  line[length > 0 ? length : 0] = '\0';
  if (length <= 0 || strncmp(line, "quit", 4) == 0) {
    pw_main_loop_quit(card->loop);
    return;
  }
  char name[64];
  char state[64];
  if (sscanf(line, "avail %63s %63s", name, state) != 2)
    return;
  for (int i = 0; i < ROUTE_COUNT; ++i) {
    if (strcmp(name, card->routes[i].name) != 0)
      continue;
    card->routes[i].available = strcmp(state, "yes") == 0  ? SPA_PARAM_AVAILABILITY_yes
                                : strcmp(state, "no") == 0 ? SPA_PARAM_AVAILABILITY_no
                                                           : SPA_PARAM_AVAILABILITY_unknown;
    mark_changed(card, PARAM_ENUM_ROUTE);
    mark_changed(card, PARAM_ROUTE);
    emit_info(card, false);
  }
}

static void quit(void *data, int number) {
  (void)number;
  pw_main_loop_quit(((struct card *)data)->loop);
}

int main(int argc, char **argv) {
  static struct card card = {
      .volume = 1.0f,
      .routes = {{"analog-input-mic", "Microphone", "mic", 200, SPA_PARAM_AVAILABILITY_yes},
                 {"analog-input-linein", "Line In", "line", 100, SPA_PARAM_AVAILABILITY_yes}}};
  pw_init(&argc, &argv);
  spa_hook_list_init(&card.hooks);
  card.device.iface =
      SPA_INTERFACE_INIT(SPA_TYPE_INTERFACE_Device, SPA_VERSION_DEVICE, &methods, &card);
  card.params[PARAM_ENUM_PROFILE] = SPA_PARAM_INFO(SPA_PARAM_EnumProfile, SPA_PARAM_INFO_READ);
  card.params[PARAM_PROFILE] = SPA_PARAM_INFO(SPA_PARAM_Profile, SPA_PARAM_INFO_READWRITE);
  card.params[PARAM_ENUM_ROUTE] = SPA_PARAM_INFO(SPA_PARAM_EnumRoute, SPA_PARAM_INFO_READ);
  card.params[PARAM_ROUTE] = SPA_PARAM_INFO(SPA_PARAM_Route, SPA_PARAM_INFO_READWRITE);

  card.loop = pw_main_loop_new(NULL);
  struct pw_loop *loop = pw_main_loop_get_loop(card.loop);
  pw_loop_add_signal(loop, SIGTERM, quit, &card);
  pw_loop_add_signal(loop, SIGINT, quit, &card);
  pw_loop_add_io(loop, STDIN_FILENO, SPA_IO_IN, false, line_read, &card);
  struct pw_context *context = pw_context_new(loop, NULL, 0);
  card.core = pw_context_connect(context, NULL, 0);
  if (card.core == NULL) {
    perror("fake card: connect");
    return 1;
  }
  struct pw_proxy *exported =
      pw_core_export(card.core, SPA_TYPE_INTERFACE_Device, &card_properties, &card.device, 0);
  if (exported == NULL) {
    perror("fake card: export");
    return 1;
  }
  struct spa_hook listener;
  spa_zero(listener);
  pw_proxy_add_listener(exported, &listener, &proxy_events, &card);
  pw_main_loop_run(card.loop);
  pw_core_disconnect(card.core);
  pw_context_destroy(context);
  pw_main_loop_destroy(card.loop);
  return 0;
}
