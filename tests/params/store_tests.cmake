# Property keys and values, the store over a registry key, and the channel that tells its peer.
set(store_tests
    channel_messages_test.cpp
    effect_keys_test.cpp
    fx_property_store_test.cpp
    fx_property_store_threads_test.cpp
    property_reader_test.cpp
    property_set_path_test.cpp
    store_channel_test.cpp
    store_sync_test.cpp
    value_bytes_test.cpp)
